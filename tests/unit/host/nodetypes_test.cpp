#include "scene/nodetypes.h"

#include <limits>
#include <map>

#include "app/symbols.h"
#include "support.h"

namespace {

using host::NodeType;
using host::NodeTypes;
using host::Parameter;

constexpr const char* kHeader = "id = 1\nname = \"A\"\n";

TEST(NodeTypes, WrongFilesAreToldAndLeftOut) {
  const struct {
    std::string text, fault;  // no fault: the file is right; "*": the reader's own words
  } cases[] = {
      {"id = 1\nname = \"A\"\n", ""},
      {"id = 1\nname = \"A\"\nbase = 9\nabstract = true\nelement = true\ninfo = 3\nicon = \"i\"\n", ""},
      {"name = \"A\"\n", ": a node type needs an id and a name"},
      {"id = 1\n", ": a node type needs an id and a name"},
      {"id = 1\nname = \"\"\n", ": a node type needs an id and a name"},
      {"id = 0\nname = \"A\"\n", ": a node type needs an id and a name"},
      {"id = \"1\"\nname = \"A\"\n", ", line 1: 'id' is no 32-bit integer"},
      {"name = \"A\"\nid = 2147483648\n", ", line 2: 'id' is no 32-bit integer"},
      {"id = 1\nname = 5\n", ", line 2: 'name' is no text"},
      {"id = 1\nname = \"A\"\nabstract = 1\n", ", line 3: 'abstract' is neither true nor false"},
      {"id = 1\nname = \"A\"\ncolor = 3\n", ", line 3: 'color' is no key of a node type"},
      {"id = 9\nname = \"A\"\n", ": another type has the id 9"},
      {"id = 1\nname = \"A\"\nbase = 77\n", ": its base 77 is not there, or has no base itself"},
      {"id = 1\nname = \"A\"\nbase = 1\n", ": its base 1 is not there, or has no base itself"},
      {"id = \n", "*"},
      {"parameters = 3\n", ", line 1: 'parameters' is no list"},
      {"parameters = [3]\n", ", line 1: 'parameters' holds what is no table"},
      {"groups = [{id = 2, color = 3}]\n", ", line 1: 'color' is no key of a group"},
      {"groups = [{name = \"G\"}]\n", ", line 1: a group or parameter needs an id; 0 and 700 are none"},
      {"parameters = [\n{id = 700, type = \"int\"}]\n",
       ", line 2: a group or parameter needs an id; 0 and 700 are none"},
      {"parameters = [{id = 2}]\n", ", line 1: a parameter needs a type"},
      {"parameters = [{id = 2, type = \"real\"}]\n", ", line 1: 'real' is no type that is known"},
      {"parameters = [{id = 2, type = \"int\", unit = \"inch\"}]\n",
       ", line 1: 'inch' is no unit that is known"},
      {"parameters = [{id = 2, type = \"int\", colour = 1}]\n", ", line 1: 'colour' is no key of a parameter"},
      {"parameters = [{id = 2, type = \"int\"},\n{id = 2, type = \"int\"}]\n",
       ", line 2: the id 2 comes twice"},
      {"groups = [{id = 2, parameters = [{id = 2, type = \"int\"}]}]\n", ", line 1: the id 2 comes twice"},
      {"parameters = [{id = 2, type = \"int\", default = 1.5}]\n", ", line 1: 'default' is no 32-bit integer"},
      {"parameters = [{id = 2, type = \"bool\", default = 1}]\n",
       ", line 1: 'default' is neither true nor false"},
      {"parameters = [{id = 2, type = \"float\", default = \"1\"}]\n", ", line 1: 'default' is no number"},
      {"parameters = [{id = 2, type = \"vector\", default = [1, 2]}]\n",
       ", line 1: the default is of another type"},
      {"parameters = [{id = 2, type = \"link\", default = 1}]\n", ", line 1: this type takes no default"},
      {"parameters = [{id = 2, type = \"int\", default = 1, min = 2}]\n",
       ", line 1: the default is out of range"},
      {"parameters = [{id = 2, type = \"vector\", default = [1, 9, 1], max = 8}]\n",
       ", line 1: the default is out of range"},
      {"parameters = [{id = 2, type = \"int\", min = 2}]\n", ""},  // the default is the end of the range
      {"parameters = [{id = 2, type = \"choice\"}]\n",
       ", line 1: the type 'choice' and a list of choices belong together"},
      {"parameters = [{id = 2, type = \"int\", choices = [[0, \"A\", \"a\"]]}]\n",
       ", line 1: the type 'choice' and a list of choices belong together"},
      {"parameters = [{id = 2, type = \"choice\", choices = []}]\n",
       ", line 1: 'choices' is no list with entries"},
      {"parameters = [{id = 2, type = \"choice\", choices = [[0, \"A\"]]}]\n",
       ", line 1: a choice is a value, a constant and a text"},
      {"symbol = \"NINE\"\n", ": the constant NINE is 9 elsewhere, not 1"},
      {"base = 9\nparameters = [{id = 50, type = \"int\"}]\n", ": its base has a parameter 50 already"},
      {"base = 9\nparameters = [{id = 49, type = \"int\"}]\n", ": its base has a parameter 49 already"},
      {"base = 9\noverrides = [{id = 51, type = \"int\"}]\n",
       ": its base has no parameter 51 of that type to override"},
      {"base = 9\noverrides = [{id = 50, type = \"float\"}]\n",
       ": its base has no parameter 50 of that type to override"},
  };
  for (const auto& c : cases) {
    TempFolder folder;
    folder.Write("9.toml",
                 "id = 9\nname = \"Nine\"\nsymbol = \"NINE\"\n"
                 "groups = [{id = 49, parameters = [{id = 50, type = \"int\", max = 5}]}]\n");
    // What is told of parameters stands behind the header, so that its line is counted from there.
    const bool isWhole = c.text.find("id = ") == 0 || c.text.find("name = ") == 0;
    const auto file = folder.Write("a.toml", isWhole ? c.text : c.text + kHeader);
    folder.Write("a.txt", "id =");
    const NodeTypes types(folder.Path());
    EXPECT_EQ(types.Find(1) != nullptr, c.fault.empty()) << c.text;
    ASSERT_EQ(types.Faults().size(), c.fault.empty() ? 0U : 1U) << c.text;
    if (c.fault.empty()) continue;
    const std::string& fault = types.Faults()[0];
    EXPECT_TRUE(c.fault == "*" ? fault.starts_with(file.string() + ", line 1: ")
                               : fault == file.string() + c.fault)
        << fault << " for " << c.text;
  }
  EXPECT_EQ(NodeTypes("/nowhere/at/all").Faults().size(), 1U);
}

TEST(NodeTypes, InheritAndOverride) {
  TempFolder folder;
  folder.Write("a.toml",
               "id = 3\nbase = 2\nname = \"C\"\nparameters = [{id = 30, type = \"string\", default = \"c\"}]\n"
               "overrides = [{id = 10, type = \"int\", default = 99}]\n");
  folder.Write(
      "b.toml",
      "id = 2\nbase = 1\nname = \"B\"\n[[groups]]\nid = 20\nparameters = [{id = 21, type = \"bool\"}]\n");
  folder.Write("c.toml",
               "id = 1\nname = \"A\"\nabstract = true\nparameters = [{id = 10, type = \"int\", default = 1, "
               "max = 5}]\n");
  NodeTypes types(folder.Path());
  ASSERT_TRUE(types.Faults().empty()) << types.Faults()[0];
  const NodeType &a = *types.Find(1), &c = *types.Find(3);
  std::string numbers;
  for (const Parameter& parameter : c.parameters) numbers += std::to_string(parameter.Number()) + " ";
  EXPECT_EQ(numbers, "10 21 30 ");
  EXPECT_EQ(c.groups.at(0).Number(), 20);
  EXPECT_EQ(c.Find(21)->group.id, 20);
  EXPECT_FALSE(c.isAbstract);
  EXPECT_EQ(a.Find(10)->standard->Data().value.integer, 1);
  EXPECT_EQ(c.Find(10)->standard->Data().value.integer, 5);  // brought into the range of the base
  EXPECT_EQ(host::container::FindData(&c.defaults, 10)->value.integer, 5);
  EXPECT_EQ(host::container::FindData(&c.Find(10)->settings, DESC_DEFAULT)->value.integer, 5);
  for (const int32_t id : {1, 2, 3}) EXPECT_TRUE(NodeTypes::Derives(c, id));
  EXPECT_FALSE(NodeTypes::Derives(c, 0));
  EXPECT_FALSE(NodeTypes::Derives(a, 2));

  NodeType added;
  added.id = 4, added.base = 3, added.name = "D";
  const NodeType* d = types.Add(added);
  EXPECT_EQ(types.Find(4), d);
  EXPECT_EQ(d->parameters.size(), 3U);
  EXPECT_THROW(types.Add(added), std::runtime_error);
}

// All that the application brings.
TEST(NodeTypes, ShippedOnesAreConsistent) {
  const NodeTypes types(std::filesystem::path(HOST_STARTUP) / "resources/nodes");
  for (const std::string& fault : types.Faults()) ADD_FAILURE() << fault;
  for (const int32_t id :
       {5140,      5159,      5160,   5168,   5170, 5162, 5163, 5164,   5100, 5101,    5137, 5156,
        5103,      5102,      5126,   5155,   5702, 5703, 5707, 5833,   5832, 1011123, 5694, 5616,
        5612,      5671,      5673,   5674,   5701, 5613, 5695, 5600,   5604, 5617,    5672, 5711,
        431000045, 100004801, 110304, 110059, 5350, 5351, 5352, 110063, 5709, 5161,    5165, 5167,
        5171,      5172,      5152,   5179,   5181, 5182, 5185, 5186}) {
    const NodeType* type = types.Find(id);
    if (!type) ADD_FAILURE() << "no type " << id;
    if (!type) continue;
    EXPECT_FALSE(type->help.empty()) << id;
    std::map<std::string, int32_t> symbols;
    for (const Parameter& parameter : type->parameters) {
      const HostGeData* symbol = host::container::FindData(&parameter.settings, DESC_IDENT);
      const HostGeData* name = host::container::FindData(&parameter.settings, DESC_NAME);
      EXPECT_TRUE(name) << id << " " << parameter.Number();
      if (!symbol) {
        ADD_FAILURE() << id << " " << parameter.Number() << " has no symbol";
      } else {
        EXPECT_TRUE(symbols.emplace(host::View(&symbol->value.string), parameter.Number()).second) << id;
      }
      const HostGeData& standard = parameter.standard->Data();
      EXPECT_EQ(standard.type, parameter.valueType) << id << " " << parameter.Number();
      EXPECT_TRUE(host::IsEqual(standard, parameter.Fit(standard).Data())) << id << " " << parameter.Number();
      EXPECT_EQ(type->Find(parameter.Number()), &parameter);
    }
  }
  const std::pair<int32_t, int32_t> bases[] = {{5159, 5155}, {5101, 5156}, {5100, 5155},
                                               {5137, 5156}, {5671, 5695}, {5671, 5694},
                                               {5673, 5694}, {5703, 5702}, {5833, 5707}};
  for (const auto& [id, base] : bases) EXPECT_TRUE(NodeTypes::Derives(*types.Find(id), base)) << id;
}

TEST(NodeTypes, ConstantsOfParametersAreThoseOfScripts) {
  const host::SymbolTable table = host::ReadSymbols(std::filesystem::path(HOST_STARTUP) / "resources/symbols");
  for (const std::string& fault : table.faults) ADD_FAILURE() << fault;
  std::map<std::string, int32_t> symbols;
  for (const host::Symbol& symbol : table.symbols) symbols.emplace(symbol.name, symbol.value);
  const NodeTypes types(std::filesystem::path(HOST_STARTUP) / "resources/nodes");
  for (const host::Symbol& symbol : types.Symbols())
    EXPECT_EQ(symbols[symbol.name], symbol.value) << symbol.name;
  const std::pair<const char*, int32_t> boundary[] = {
      {"DESC_NAME", DESC_NAME},     {"DESC_DEFAULT", DESC_DEFAULT},       {"DESC_CYCLE", DESC_CYCLE},
      {"DESC_HELP", DESC_HELP},     {"DESC_UNIT_TIME", DESC_UNIT_TIME},   {"DTYPE_BOOL", DTYPE_BOOL},
      {"DTYPE_COLOR", DTYPE_COLOR}, {"DTYPE_GROUP", DTYPE_GROUP},         {"VECTOR_Z", VECTOR_Z},
      {"ID_USERDATA", ID_USERDATA}, {"DIRTYFLAGS_DATA", DIRTYFLAGS_DATA}, {"PRIM_AXIS_ZN", 5},
  };
  for (const auto& [name, value] : boundary) EXPECT_EQ(symbols[name], value) << name;
}

}  // namespace
