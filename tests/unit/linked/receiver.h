// A type of elements that a plug-in registers, whose callbacks a test sets.
#ifndef TESTS_UNIT_LINKED_RECEIVER_H
#define TESTS_UNIT_LINKED_RECEIVER_H

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "kelvar/baselist.h"
#include "kelvar/plugin.h"
#include "linked_support.h"

class ReceiverTest : public LinkedTest {
 public:
  // The element that a name of __main__ stands for.
  template <class Host>
  static Host* Named(const char* name) {
    PyObject* wrapper = PyDict_GetItemString(Names(), name);
    return static_cast<Host*>(qlx::LookUp(reinterpret_cast<qlx::AtomWrapper*>(wrapper)->link));
  }

 protected:
  // The ids that arrived, and what becomes of them.
  inline static std::vector<int32_t> told;
  inline static std::function<bool(GeListNode*, int32_t, void*)> receive;
  // What runs ahead of the host's own reading, writing and describing of a parameter.
  inline static std::function<void()> onGet, onSet, onDescribe;

  static void Act(std::function<void()> action) {
    if (action) action();
  }

  void SetUp() override {
    LinkedTest::SetUp();
    for (const int32_t id : {2000001, int32_t(PLUGIN_KIND_SCENE_LOADER)}) {
      const String name = kelvar::Text("Receiver");
      NodeRecord record{};
      record.base = {sizeof record, PLUGIN_KIND_OBJECT, id, 0, name.Word(), nullptr, nullptr, nullptr};
      record.baseType = 5155;
      record.Message = [](void*, GeListNode* node, int32_t type, void* data) {
        told.push_back(type);
        const auto handler = receive;  // which may put another in its place
        return HostBool(!handler || handler(node, type, data));
      };
      record.GetDParameter = [](void*, const GeListNode*, const HostDescID*, HostGeData*, int32_t*) {
        return Act(onGet), HostBool(0);
      };
      record.SetDParameter = [](void*, GeListNode*, const HostDescID*, const HostGeData*, int32_t*) {
        return Act(onSet), HostBool(0);
      };
      record.GetDDescription = [](void*, const GeListNode*, Description*, int32_t*) {
        return Act(onDescribe), HostBool(1);
      };
      ASSERT_TRUE(BasePlugin::RegisterNode(&record)) << id;
    }
    Run(R"(
import gc, qlx
from qlx import BaseContainer, BaseList2D, BaseObject, DescID, DescLevel, Vector
from qlx.documents import BaseDocument
op, loader, other, doc = BaseList2D(2000001), BaseList2D(15), BaseList2D(2000001), BaseDocument()
dead = BaseObject(5140); holder = BaseObject(5140); dead.InsertUnder(holder); del holder
def fault(*args):
    try: return op.Message(*args)
    except Exception as error: return type(error).__name__ + ': ' + str(error)
    finally: Key.isArmed = False
answered = DescID(DescLevel(1, 2, 3), DescLevel(4, 5, 6), DescLevel(7, 8, 9)); answered.PushId(DescLevel(10, 11, 12))
class Key(str):  # acts where its name is looked for, but not as long as the dictionary is made
    __hash__ = str.__hash__
    isArmed = False
    def __eq__(self, name):
        if Key.isArmed: self.act()
        return False
def key(name, act):
    made = Key(name); made.act = act
    return made
def arm(d):
    Key.isArmed = True
    return d
)");
  }
  void TearDown() override {
    receive = nullptr;
    onGet = onSet = onDescribe = nullptr;
    told.clear();
    Run("for name in list(globals()):\n"
        "    if name[:2] != '__': del globals()[name]\n"
        "del name, __builtins__\n");
    LinkedTest::TearDown();
  }

  // What the expression is, as text.
  static std::string Eval(const std::string& expression) {
    PyObject* value = PyRun_String(expression.c_str(), Py_eval_input, Names(), Names());
    PyObject* text = value ? PyObject_Str(value) : nullptr;
    if (!text) PyErr_Print();
    const std::string result = text ? PyUnicode_AsUTF8(text) : "an error";
    Py_XDECREF(text);
    Py_XDECREF(value);
    return result;
  }
};

template <class Message>
Message& As(void* data) {
  return *static_cast<Message*>(data);
}

#endif
