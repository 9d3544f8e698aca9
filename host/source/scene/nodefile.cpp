#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <span>
#include <stdexcept>

#include "boundary/host.h"
#include "files/toml.h"
#include "scene/nodetypes.h"
#include "tables/values.h"

namespace host {
namespace fs = std::filesystem;
namespace {

using Limits = std::numeric_limits<int32_t>;

struct Word {
  std::string_view word;
  int32_t value;
};

constexpr Word kTypes[] = {
    {"bool", DTYPE_BOOL},
    {"int", DTYPE_LONG},
    {"choice", DTYPE_LONG},
    {"int64", DTYPE_LLONG},
    {"float", DTYPE_REAL},
    {"vector", DTYPE_VECTOR},
    {"color", DTYPE_COLOR},
    {"matrix", DTYPE_MATRIX},
    {"time", DTYPE_TIME},
    {"string", DTYPE_STRING},
    {"filename", DTYPE_FILENAME},
    {"link", DTYPE_BASELISTLINK},
    {"container", DTYPE_SUBCONTAINER},
};

constexpr Word kUnits[] = {
    {"length", DESC_UNIT_LENGTH}, {"angle", DESC_UNIT_ANGLE}, {"percent", DESC_UNIT_PERCENT},
    {"pixel", DESC_UNIT_PIXEL},   {"time", DESC_UNIT_TIME},
};

class NodeFile {
 public:
  explicit NodeFile(const fs::path& file) : file_(file) {}

  NodeType Read() {
    const toml::table table = ParseToml(file_);
    for (const auto& [key, node] : table) {
      if (key == "id") {
        type_.id = Int32(key, node);
      } else if (key == "base") {
        type_.base = Int32(key, node);
      } else if (key == "abstract") {
        type_.isAbstract = Truth(key, node);
      } else if (key == "element") {
        type_.isElement = Truth(key, node);
      } else if (key == "info") {
        type_.info = Int32(key, node);
      } else if (key == "name") {
        type_.name = Text(key, node);
      } else if (key == "type") {
        type_.typeName = Text(key, node);
      } else if (key == "help") {
        type_.help = Text(key, node);
      } else if (key == "icon") {
        type_.icon = Text(key, node);
      } else if (key == "parameters") {
        ForEach(key, node, [&](const toml::table& one) { ReadParameter(one, {}, type_.parameters); });
      } else if (key == "overrides") {
        ForEach(key, node, [&](const toml::table& one) { ReadParameter(one, {}, type_.overrides); });
      } else if (key == "groups") {
        ForEach(key, node, [&](const toml::table& one) { ReadGroup(one, {}); });
      } else if (key != "symbol") {
        RefuseKey(key, "a node type");
      }
    }
    if (type_.id == 0 || type_.name.empty())
      throw std::runtime_error(fmt::format("{}: a node type needs an id and a name", file_.string()));
    if (type_.typeName.empty()) type_.typeName = type_.name;
    TakeSymbol(table, type_.id);
    return std::move(type_);
  }

 private:
  [[noreturn]] void Refuse(const toml::source_region& at, std::string_view why) {
    RefuseToml(file_, at.begin.line, why);
  }
  [[noreturn]] void RefuseKey(const toml::key& key, std::string_view of) {
    Refuse(key.source(), fmt::format("'{}' is no key of {}", key.str(), of));
  }

  int32_t Int32(std::string_view key, const toml::node& node) {
    const auto* number = node.as_integer();
    if (number && number->get() >= Limits::min() && number->get() <= Limits::max())
      return int32_t(number->get());
    Refuse(node.source(), fmt::format("'{}' is no 32-bit integer", key));
  }
  bool Truth(std::string_view key, const toml::node& node) {
    if (const auto* truth = node.as_boolean()) return truth->get();
    Refuse(node.source(), fmt::format("'{}' is neither true nor false", key));
  }
  const std::string& Text(std::string_view key, const toml::node& node) {
    if (const auto* text = node.as_string()) return text->get();
    Refuse(node.source(), fmt::format("'{}' is no text", key));
  }
  double Number(std::string_view key, const toml::node& node) {
    if (const auto number = node.is_number() ? node.value<double>() : std::nullopt) return *number;
    Refuse(node.source(), fmt::format("'{}' is no number", key));
  }
  int32_t OneOf(std::span<const Word> words, std::string_view key, const toml::node& node) {
    const std::string& text = Text(key, node);
    const auto found = std::find_if(words.begin(), words.end(), [&](const Word& w) { return w.word == text; });
    if (found != words.end()) return found->value;
    Refuse(node.source(), fmt::format("'{}' is no {} that is known", text, key));
  }

  void ForEach(std::string_view key, const toml::node& node,
               const std::function<void(const toml::table&)>& take) {
    const toml::array* array = node.as_array();
    if (!array) Refuse(node.source(), fmt::format("'{}' is no list", key));
    for (const toml::node& one : *array) {
      if (!one.is_table()) Refuse(one.source(), fmt::format("'{}' holds what is no table", key));
      take(*one.as_table());
    }
  }

  void TakeSymbol(const toml::table& table, int32_t value) {
    const toml::node* symbol = table.get("symbol");
    if (symbol) type_.symbols.push_back({Text("symbol", *symbol), value});
  }

  // The number of a group or parameter, which is new in this file.
  int32_t NumberOf(const toml::table& table) {
    const toml::node* id = table.get("id");
    const int32_t number = id ? Int32("id", *id) : 0;
    if (number == 0 || number == ID_USERDATA)
      Refuse(table.source(), fmt::format("a group or parameter needs an id; 0 and {} are none", ID_USERDATA));
    for (const auto* known : {&type_.groups, &type_.parameters, &type_.overrides})
      for (const Parameter& parameter : *known)
        if (parameter.Number() == number) Refuse(table.source(), fmt::format("the id {} comes twice", number));
    return number;
  }

  void ReadGroup(const toml::table& table, const DescLevel& parent) {
    const int32_t number = NumberOf(table);
    BaseContainer settings;
    Put(settings, DESC_DATATYPE, Value::Int32(DTYPE_GROUP));
    for (const auto& [key, node] : table) {
      if (key == "name" || key == "symbol") {
        Put(settings, key == "name" ? DESC_NAME : DESC_IDENT, Value::Text(Text(key, node)));
      } else if (key != "id" && key != "parameters" && key != "groups") {
        RefuseKey(key, "a group");
      }
    }
    TakeSymbol(table, number);
    const DescLevel level{number, DTYPE_GROUP, 0};
    type_.groups.emplace_back(std::initializer_list<DescLevel>{level}, parent, settings);
    if (const toml::node* inner = table.get("parameters"))
      ForEach("parameters", *inner,
              [&](const toml::table& one) { ReadParameter(one, level, type_.parameters); });
    if (const toml::node* inner = table.get("groups"))
      ForEach("groups", *inner, [&](const toml::table& one) { ReadGroup(one, level); });
  }

  void ReadParameter(const toml::table& table, const DescLevel& group, std::vector<Parameter>& into) {
    const int32_t number = NumberOf(table);
    const toml::node* typeNode = table.get("type");
    if (!typeNode) Refuse(table.source(), "a parameter needs a type");
    const int32_t dtype = OneOf(kTypes, "type", *typeNode);
    BaseContainer settings;
    Put(settings, DESC_DATATYPE, Value::Int32(dtype));
    bool isOfMatrix = false;
    for (const auto& [key, node] : table) {
      if (key == "name" || key == "symbol" || key == "help") {
        const int32_t id = key == "name" ? DESC_NAME : key == "help" ? DESC_HELP : DESC_IDENT;
        Put(settings, id, Value::Text(Text(key, node)));
      } else if (key == "default") {
        Put(settings, DESC_DEFAULT, ValueOf(dtype, node));
      } else if (key == "min" || key == "max" || key == "step") {
        const int32_t id = key == "min" ? DESC_MIN : key == "max" ? DESC_MAX : DESC_STEP;
        Put(settings, id,
            dtype == DTYPE_LONG ? Value::Int32(Int32(key, node)) : Value::Float(Number(key, node)));
      } else if (key == "unit") {
        Put(settings, DESC_UNIT, Value::Int32(OneOf(kUnits, "unit", node)));
      } else if (key == "choices") {
        ReadChoices(node, settings);
      } else if (key == "animatable") {
        Put(settings, DESC_ANIMATE, Value::Int32(Truth(key, node)));
      } else if (key == "matrix") {
        isOfMatrix = Truth(key, node);
      } else if (key != "id" && key != "type") {
        RefuseKey(key, "a parameter");
      }
    }
    if (!container::FindData(&settings, DESC_ANIMATE)) Put(settings, DESC_ANIMATE, Value::Int32(1));
    if ((typeNode->value_or(std::string_view()) == "choice") != (table.get("choices") != nullptr))
      Refuse(table.source(), "the type 'choice' and a list of choices belong together");
    Parameter made({DescLevel{number, dtype, 0}}, group, settings);
    made.isOfMatrix = isOfMatrix;
    const HostGeData* wanted = container::FindData(&settings, DESC_DEFAULT);
    if (wanted && !IsEqual(*wanted, made.standard->Data()))
      Refuse(table.source(), "the default is out of range");
    Put(made.settings, DESC_DEFAULT, *made.standard);
    TakeSymbol(table, number);
    into.push_back(std::move(made));
  }

  // Each is a list of value, constant and text. They bound the parameter's range.
  void ReadChoices(const toml::node& node, BaseContainer& settings) {
    const toml::array* choices = node.as_array();
    if (!choices || choices->empty()) Refuse(node.source(), "'choices' is no list with entries");
    BaseContainer cycle;
    int32_t least = Limits::max(), most = Limits::min();
    for (const toml::node& one : *choices) {
      const toml::array* choice = one.as_array();
      if (!choice || choice->size() != 3) Refuse(one.source(), "a choice is a value, a constant and a text");
      const int32_t value = Int32("value", *choice->get(0));
      type_.symbols.push_back({Text("constant", *choice->get(1)), value});
      Put(cycle, value, Value::Text(Text("text", *choice->get(2))));
      least = std::min(least, value);
      most = std::max(most, value);
    }
    Put(settings, DESC_CYCLE, Value(std::make_unique<BaseContainer>(cycle)));
    Put(settings, DESC_MIN, Value::Int32(least));
    Put(settings, DESC_MAX, Value::Int32(most));
  }

  Value ValueOf(int32_t dtype, const toml::node& node) {
    switch (dtype) {
      case DTYPE_BOOL:
        return Value::Int32(Truth("default", node));
      case DTYPE_LONG:
        return Value::Int32(Int32("default", node));
      case DTYPE_LLONG:
        if (const auto* number = node.as_integer())
          return Value::Adopt({HOST_DATA_INT64, 0, {.integer = number->get()}});
        break;
      case DTYPE_REAL:
        return Value::Float(Number("default", node));
      case DTYPE_VECTOR:
      case DTYPE_COLOR:
        if (const toml::array* parts = node.as_array(); parts && parts->size() == 3)
          return Value::Of({Number("default", *parts->get(0)), Number("default", *parts->get(1)),
                            Number("default", *parts->get(2))});
        break;
      case DTYPE_TIME:
        if (const toml::array* parts = node.as_array(); parts && parts->size() == 2)
          return Value::Adopt(
              {HOST_DATA_TIME,
               0,
               {.time = {Number("default", *parts->get(0)), Number("default", *parts->get(1))}}});
        break;
      case DTYPE_STRING:
        return Value::Text(Text("default", node));
      case DTYPE_FILENAME:
        return Value::Adopt({HOST_DATA_FILENAME, 0, {.filename = MakeFilename(Text("default", node))}});
      default:
        Refuse(node.source(), "this type takes no default");
    }
    Refuse(node.source(), "the default is of another type");
  }

  const fs::path& file_;
  NodeType type_;
};

}  // namespace

NodeType ReadNodeType(const fs::path& file) { return NodeFile(file).Read(); }

}  // namespace host
