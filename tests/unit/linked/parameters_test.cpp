// Parameters of elements whose plug-in's code runs while scripts use them.
#include "kelvar.framework/source/tables/t_description.h"
#include "kelvar.framework/source/tables/t_messages.h"
#include "receiver.h"

namespace {

using ParameterTest = ReceiverTest;

TEST_F(ParameterTest, ElementsAreToldOfChangesByItems) {
  const std::vector<int32_t> change = {HOST_MSG_CHANGE};
  for (const char* statement : {"op[903] = Vector(1)", "op[903] = Vector(1)", "op[903, 1000] = 5"}) {
    Run(statement);
    EXPECT_EQ(std::exchange(told, {}), change) << statement;
  }
  Run("del op[903, 1000], op[903]");
  EXPECT_EQ(Eval("op.SetParameter(903, Vector(2), 0), op.SetParameter(903, 1, 0), op.GetParameter(903, 0)"),
            "(True, False, Vector(2, 2, 2))");
  Run("try: op[903] = 1\n"
      "except TypeError: pass\n"
      "del op[99999]\n");
  EXPECT_TRUE(told.empty());
  tables::atom.GetDirty = [](const QLXAtom*, int32_t) { return uint32_t(5); };
  Run("op[903] = Vector(3); assert op[903] == Vector(3)");
  EXPECT_TRUE(told.empty());
}

TEST_F(ParameterTest, ElementsThatEndWhileTheirParametersAreUsed) {
  const struct {
    std::function<void()>& when;
    const char *call, *answer;
  } cases[] = {
      {onGet, "op[903]", "dead"},
      {onGet, "op[903, 1000]", "dead"},
      {onGet, "op[903, 1000, 5]", "dead"},
      {onGet, "op[700, 1]", "dead"},
      {onGet, "op.__setitem__(903, Vector())", "dead"},
      {onGet, "op.__setitem__((903, 1001), 1)", "dead"},
      {onGet, "op.__delitem__((903, 1001))", "dead"},
      {onGet, "op.GetParameter(903, 0)", "None"},
      {onGet, "op.GetAnimatedParameter(DescID(903), 0)", "False"},
      {onGet, "op.SetKeyframeSelection(903, True)", "False"},
      {onGet, "op.Scale(2)", "None"},
      {onSet, "op.__setitem__(903, Vector())", "parameter set failed"},
      {onSet, "op.__setitem__((903, 1001), 1)", "parameter set failed"},
      {onSet, "op.__delitem__(903)", "None"},
      {onSet, "op.SetParameter(903, Vector(), 0)", "False"},
      {onSet, "op.Scale(2)", "None"},
      {onSet, "op.SetAnimatedParameter(qlx.CTrack(op, 903), DescID(903), Vector(), Vector(), 0, 0)", "False"},
      {onDescribe, "op.__setitem__((700, 1), 'text')", "parameter set failed"},
      {onDescribe, "op.SetParameter((700, 1), 'text', 0)", "False"},
      {onDescribe, "op.Scale(2)", "None"},
      {onDescribe, "type(op.GetDescription(0)).__name__", "Description"},
  };
  for (const auto& c : cases) {
    Run(("settings = BaseContainer(); settings[" + std::to_string(DESC_DATATYPE) + "] = 130\n" +
         "op = BaseList2D(2000001); op.AddUserData(settings)\n"
         "def attempt(call):\n"
         "  try: return call()\n"
         "  except ReferenceError: return 'dead'\n"
         "  except AttributeError as error: return error\n")
            .c_str());
    c.when = [&] {
      c.when = nullptr;
      Named<BaseList2D>("op")->Free();
    };
    EXPECT_EQ(Eval(std::string("attempt(lambda: ") + c.call + ")"), c.answer) << c.call;
    EXPECT_EQ(Eval("op.IsAlive()"), "False") << c.call;
  }
}

}  // namespace
