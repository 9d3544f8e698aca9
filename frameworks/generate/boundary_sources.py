"""The sources that follow from the tables: thin classes, stand-ins, a host's side, a fake host."""
import re

from boundary_form import FRAMEWORKS


# The vocabulary of the thin classes.

WORDS = {"HostString": "String", "HostFilename": "Filename"}


def thin_result(ctype, call):
    if ctype in WORDS:
        return WORDS[ctype], f"{WORDS[ctype]}::Adopt({call})"
    if ctype == "HostResult":
        return "tavor::Error", f"tavor::Error::Adopt({call})"
    if ctype == "HostBool":
        return "bool", f"{call} != 0"
    return ctype, call


def thin_parameter(parameter, following):
    if parameter.ctype == "HostBool":
        return f"bool {parameter.name}", parameter.name
    match = re.fullmatch(r"(const )?(HostString|HostFilename)\*", parameter.ctype)
    if not match or (following and following.name == "count"):
        return f"{parameter.ctype} {parameter.name}", parameter.name
    if match[1]:
        return f"const {WORDS[match[2]]}& {parameter.name}", f"{parameter.name}.Word()"
    return f"{WORDS[match[2]]}& {parameter.name}", f"{parameter.name}.Out()"


def thin_forward(entry, callee, self_type="", self_word="", static=""):
    parameters, arguments, suffix = [], [], ""
    rest = list(entry.parameters)
    if self_type and rest and rest[0].name == "self":
        constant = rest[0].ctype.startswith("const ")
        suffix = " const" if constant else ""
        arguments.append(self_word)
        rest = rest[1:]
        static = ""
    for index, parameter in enumerate(rest):
        following = rest[index + 1] if index + 1 < len(rest) else None
        declared, passed = thin_parameter(parameter, following)
        parameters.append(declared)
        arguments.append(passed)
    result, call = thin_result(entry.result, f"{callee}({', '.join(arguments)})")
    keyword = "return " if result != "void" else ""
    return f"{static}{result} {entry.name}({', '.join(parameters)}){suffix} {{ {keyword}{call}; }}"


def doc(entry, indent):
    return f"{indent}// {entry.text}\n"


VALUE_CLASS = """class {cls} {{
 public:
  {cls}() = default;
  {cls}(const {cls}& other) : word_(other.word_.word ? tables::{stem}.Copy(&other.word_) : {word}{{}}) {{}}
  {cls}({cls}&& other) noexcept : word_(std::exchange(other.word_, {word}{{}})) {{}}
  {cls}& operator=({cls} other) noexcept {{
    std::swap(word_, other.word_);
    return *this;
  }}
  ~{cls}() {{
    if (word_.word) tables::{stem}.Destroy(&word_);
  }}

  static {cls} Adopt({word} word) {{
    {cls} value;
    value.word_ = word;
    return value;
  }}
  {word} Release() {{ return std::exchange(word_, {word}{{}}); }}
  const {word}* Word() const {{ return &word_; }}
  {word}* Word() {{ return &word_; }}
  {word}* Out() {{
    *this = {cls}();
    return &word_;
  }}

{methods}
 private:
  {word} word_{{}};
}};
static_assert(sizeof({cls}) == sizeof({word}));
"""


def thin_includes(table, tables):
    used = " ".join(e.signature for e in table.entries)
    includes = [f'#include "{t.thin}"' for t in tables if table.base and t.klass == table.base]
    if "HostString" in used and table.stem != "string":
        includes.append('#include "kelvar/string.h"')
    if "HostFilename" in used and table.stem != "filename":
        includes.append('#include "kelvar/filename.h"')
    if "HostResult" in used:
        includes.append('#include "tavor/error.h"')
    return includes


def write_thin(table, tables):
    guard = re.sub(r"\W", "_", table.thin).upper()
    lines = [f"// {table.title}", f"#ifndef {guard}", f"#define {guard}", "", "#include <utility>", "",
             '#include "boundary/tables.h"']
    # A value class and the error that carries it know each other: the class comes first.
    includes = thin_includes(table, tables)
    late = [i for i in includes if table.value and ("error.h" in i)]
    lines += [i for i in includes if i not in late]
    lines.append("")
    callee = lambda e: f"tables::{table.stem}.{e.name}"
    if table.value:
        cls, word = table.value
        methods = [e for e in table.entries if e.name not in ("Copy", "Destroy")]
        forwards = {e.name: thin_forward(e, callee(e), cls, "&word_", "static ") for e in methods}
        # The error that carries a text needs the class complete: such methods follow it.
        following = [e for e in methods if e.result == "HostResult"]
        declared = "".join(doc(e, "  ") + "  " +
                           (forwards[e.name].split(" {")[0] + ";" if e in following else forwards[e.name]) + "\n"
                           for e in methods)
        if following:
            lines += ["namespace tavor {", "class Error;", "}", ""]
        lines.append(VALUE_CLASS.format(cls=cls, word=word, stem=table.stem, methods=declared))
        lines += late + [""]
        for e in following:
            body = forwards[e.name].removeprefix("static ")
            lines.append("inline " + body.replace(f" {e.name}(", f" {cls}::{e.name}(", 1))
    elif table.klass:
        heritage = f" : {table.base}" if table.base else ""
        lines.append(f"struct {table.klass}{heritage} {{\n  {table.klass}() = delete;\n")
        for e in table.entries:
            lines.append(doc(e, "  ") + "  " + thin_forward(e, callee(e), table.klass, "this", "static "))
        lines.append("};")
    elif table.interface:
        cls = table.interface[0]
        lines.append(f"struct {cls} {{\n  const {table.struct}* table;\n")
        lines.append(f'  static constexpr const char* kIdentity = "{table.identity}";\n')
        for e in table.entries:
            forward = thin_forward(e, f"Entry<offsetof({table.struct}, {e.name})>(&{table.struct}::{e.name}, "
                                      f"&standin::{table.stem}::{e.name})", cls, "this")
            lines.append(doc(e, "  ") + "  " + forward.replace(") const {", ") {"))
        lines.append(f"""
 private:
  template <size_t offset, class Member, class StandIn>
  StandIn* Entry(Member member, StandIn* standIn) const {{
    if (table->head.size <= offset || !(table->*member)) return standIn;
    return table->*member;
  }}
}};

// The table of an interface whose entries are the methods of `Impl`, which derives from
// {cls} and takes and returns the C types.
template <class Impl>
inline constexpr {table.struct} k{cls}Table = {{
    {{sizeof({table.struct}), 1, {cls}::kIdentity}},""")
        for e in table.entries:
            inner = ", ".join(f"{p.ctype} {p.name}" for p in e.parameters)
            call = f"static_cast<Impl*>(self)->{e.name}({', '.join(p.name for p in e.parameters[1:])})"
            guard = e.guarded(call)
            lines.append(f"    []({inner}) -> {e.result} {{ return {guard}; }},")
        lines.append("};")
    else:
        space = table.functions or f"tavor::{table.service[0]}"
        lines.append(f"namespace {space} {{\n")
        for e in table.entries:
            target = callee(e) if table.group else f"tables::{table.stem}().{e.name}"
            lines.append(doc(e, "") + "inline " + thin_forward(e, target))
        lines.append(f"\n}}  // namespace {space}")
    lines += ["", "#endif", ""]
    text = "\n".join(lines)
    if table.service and table.klass:
        text = text.replace(f"tables::{table.stem}.", f"tables::{table.stem}().")
    return text


def write_tables_header(tables):
    lines = ["// Every table of the boundary as the module calls it: what the host lacks is filled with",
             "// stand-ins that answer with the documented failure.", "#ifndef BOUNDARY_TABLES_H",
             "#define BOUNDARY_TABLES_H", "", "#include <cstddef>", "#include <string>", "",
             '#include "boundary/guard.h"']
    lines += [f'#include "{t.header.relative_to(FRAMEWORKS).as_posix()}"' for t in tables]
    lines += ["", "namespace tables {", ""]
    for t in tables:
        if t.group:
            lines.append(f"extern {t.struct} {t.stem};")
        elif t.service:
            lines.append(f"// Resolved through g_tavor on first use.\nconst {t.struct}& {t.stem}();")
    lines += ["", "// Copies what the host offers. A text names each required entry that it lacks; empty: none.",
              "std::string Resolve(const HostTables* host);", "", "// Puts the stand-ins back.", "void Forget();", "",
              "}  // namespace tables", ""]
    for t in tables:
        lines.append(f"namespace standin::{t.stem} {{")
        lines += [f"{e.declaration(e.name)};" for e in t.entries]
        lines.append("}")
    lines += ["", "#endif", ""]
    return "\n".join(lines)


def write_tables_source(tables):
    lines = ['#include "boundary/tables.h"', "", '#include "boundary/resolve.h"', ""]
    for t in tables:
        lines.append(f"namespace standin::{t.stem} {{")
        for e in t.entries:
            failure = e.failure()
            unused = "".join(f"(void){p.name}; " for p in e.parameters
                             if p.name not in ("fallback",) and not (e.notes["fails"] == "text" and p.name == "size"))
            lines.append(f"{e.declaration(e.name)} {{ {unused}{f'return {failure};' if failure else ''} }}")
        lines.append("}")
    lines += ["", "namespace tables {", ""]
    for t in tables:
        if not (t.group or t.service):
            continue
        filled = f"{{sizeof({t.struct}), 0" if t.group else f'{{{{sizeof({t.struct}), 1, "{t.identity}"}}'
        data = ", nullptr" * (t.words - (1 if t.group else 2))
        entries = "".join(f", &standin::{t.stem}::{e.name}" for e in t.entries)
        name = f"{t.stem}{'StandIns' if t.group else 'Fallback'}"
        lines.append(f"static constexpr {t.struct} {name} = {filled}{data}{entries}}};")
        if t.group:
            lines.append(f"{t.struct} {t.stem} = {name};")
        lines.append("")
        if t.service:
            lines.append(f"const {t.struct}& {t.stem}() {{\n"
                         f"  static boundary::Service<{t.struct}> service(\"{t.identity}\", {t.stem}Fallback);\n"
                         f"  return service.Get();\n}}\n")
    groups = [t for t in tables if t.group]
    lines.append("std::string Resolve(const HostTables* host) {\n  std::string missing;")
    for t in groups:
        required = ", ".join(f'{{offsetof({t.struct}, {e.name}), "{e.name}"}}' for e in t.entries if e.required)
        lines.append(f'  const {t.struct} {t.stem}Offered = boundary::ResolveGroup(\n'
                     f'      host, {t.group}, "{t.stem}", {t.stem}StandIns, {{{required}}}, missing);')
    lines.append("  if (!missing.empty()) return missing;")
    lines += [f"  {t.stem} = {t.stem}Offered;" for t in groups]
    lines += ["  return missing;", "}", "", "void Forget() {"]
    lines += [f"  {t.stem} = {t.stem}StandIns;" for t in groups]
    lines += ["}", "", "}  // namespace tables", ""]
    return "\n".join(lines)


def offered(tables):
    return [t for t in tables if t.group or t.service]


def table_initialiser(t, name, prefix):
    head = (f"{{sizeof({t.struct}), 0" if t.group else f'{{{{sizeof({t.struct}), 1, "{t.identity}"}}')
    data = ", nullptr" * (t.words - (1 if t.group else 2))
    return f"{t.struct} {name} = {head}{data}{''.join(f', &{prefix}{e.name}' for e in t.entries)}}};"


def write_host_header(tables):
    lines = ["// The operations that a host implements, and the tables that they fill. A host in C++ defines",
             "// each function below; one that it leaves out does not link.", "#ifndef BOUNDARY_HOST_H",
             "#define BOUNDARY_HOST_H", ""]
    lines += [f'#include "{t.header.relative_to(FRAMEWORKS).as_posix()}"' for t in offered(tables)]
    for t in offered(tables):
        lines.append(f"\nnamespace host::{t.stem} {{")
        lines += [f"{e.declaration(e.name)}{' noexcept' if e.quick else ''};" for e in t.entries]
        lines.append("}")
    lines += ["", "namespace host::boundary_tables {", ""]
    lines += [f"extern {t.struct} {t.stem};" for t in offered(tables)]
    lines += ["", "// Puts every group into its place.", "void Fill(HostTables& tables, int32_t version);", "",
              "// The service table with that identity, or null.",
              "const TavorHead* ResolveService(const char* identity);", "",
              "}  // namespace host::boundary_tables", "", "#endif", ""]
    return "\n".join(lines)


def write_host_source(tables):
    lines = ['#include "boundary/host.h"', "", "#include <cstring>", "", '#include "boundary/guard.h"', ""]
    for t in offered(tables):
        lines.append(f"namespace {{\nnamespace guarded_{t.stem} {{")
        for e in t.entries:
            guard = e.guarded(f"host::{t.stem}::{e.name}({e.arguments})")
            lines.append(f"{e.declaration(e.name)} {{ return {guard}; }}")
        lines.append("}\n}")
    lines.append("\nnamespace host::boundary_tables {\n")
    lines += [table_initialiser(t, t.stem, f"guarded_{t.stem}::") for t in offered(tables)]
    lines += ["", "void Fill(HostTables& tables, int32_t version) {",
              "  tables = {};", "  tables.version = version;", "  tables.groupCount = HOST_GROUP_COUNT;"]
    lines += [f"  tables.group[{t.group}] = reinterpret_cast<HostGroup*>(&{t.stem});" for t in tables if t.group]
    lines += ["}", "", "const TavorHead* ResolveService(const char* identity) {"]
    lines += [f"  if (!std::strcmp(identity, {t.stem}.head.identity)) return &{t.stem}.head;"
              for t in tables if t.service]
    lines += ["  return nullptr;", "}", "", "}  // namespace host::boundary_tables", ""]
    return "\n".join(lines)


def write_fake_header(tables):
    lines = ["// A host for tests: every entry counts its calls and answers with its documented failure,",
             "// unless the test stores a function of its own under the entry's name.", "#ifndef BOUNDARY_FAKE_HOST_H",
             "#define BOUNDARY_FAKE_HOST_H", "", "#include <functional>", "#include <string>", ""]
    lines += [f'#include "{t.header.relative_to(FRAMEWORKS).as_posix()}"' for t in offered(tables)]
    lines += ["", "namespace fake {", "", "// Told of every call, as \"group.Entry\"; may be empty.",
              "extern std::function<void(const char*)> onCall;", ""]
    for t in offered(tables):
        lines.append(f"namespace {t.stem} {{\nextern {t.struct} table;")
        for e in t.entries:
            lines.append(f"extern std::function<{e.signature}> {e.name};")
        lines.append("}")
    lines += ["", "}  // namespace fake", "", "#endif", ""]
    return "\n".join(lines)


def write_fake_source(tables):
    lines = ['#include "boundary/fake_host.h"', "", "namespace fake {", "",
             "std::function<void(const char*)> onCall;", ""]
    for t in offered(tables):
        lines.append(f"namespace {t.stem} {{")
        lines += [f"std::function<{e.signature}> {e.name};" for e in t.entries]
        lines.append("namespace {")
        for e in t.entries:
            failure = e.failure()
            unused = "".join(f"(void){p.name}; " for p in e.parameters)
            lines.append(f"{e.declaration('Fake' + e.name)} {{\n  if (onCall) onCall(\"{t.stem}.{e.name}\");\n"
                         f"  if ({e.name}) return {e.name}({e.arguments});\n  {unused}"
                         f"{f'return {failure};' if failure else ''}\n}}")
        lines.append("}")
        lines.append(table_initialiser(t, "table", "Fake"))
        lines.append(f"}}  // namespace {t.stem}\n")
    lines += ["}  // namespace fake", ""]
    return "\n".join(lines)


def write_layout_header(tables, pins):
    """C99 assertions that each entry still stands where it was pinned."""
    lines = ["/* Pinned places of the entries. Compiles as C99 and as C++. */", "#include <stddef.h>"]
    lines += [f'#include "{t.header.relative_to(FRAMEWORKS).as_posix()}"' for t in tables]
    lines.append('#define PINNED(table, entry, word) \\\n'
                 '  typedef char pinned_##table##_##entry[offsetof(table, entry) == (word) * 8 ? 1 : -1]')
    for t in tables:
        lines += [f"PINNED({t.struct}, {name}, {word});" for name, word, _ in pins[t.stem]]
    return "\n".join(lines) + "\n"
