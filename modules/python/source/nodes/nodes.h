// Scene elements that carry a script.
#ifndef NODES_NODES_H
#define NODES_NODES_H

namespace qlx {

void RegisterPythonTag();
void RegisterPythonEffector();
void RegisterPythonGraphNode();
void RegisterPythonGenerator();

}  // namespace qlx

#endif
