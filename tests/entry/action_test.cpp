// The actions of the entry point, and hosts that offer too little.
#include <climits>
#include <cstddef>
#include <functional>

#include "session.h"

namespace {

class ActionTest : public EntryTest {
 protected:
  // Nothing of a refused host is used, whatever an earlier one has left.
  void ExpectRefused() {
    fake::onCall = [](const char* entry) { ADD_FAILURE() << entry << " of a refused host"; };
    EXPECT_EQ(Message(HOST_MESSAGE_INIT), -1);
    EXPECT_EQ(Message(HOST_MESSAGE_RUN_APPLICATION), -1);
    EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 0);
    ExpectAbsent();
    EXPECT_EQ(Close(), 1);
    fake::onCall = nullptr;
  }
};

TEST_F(ActionTest, AnswersBeforeAnythingElse) {
  for (const auto& [action, answer] : std::initializer_list<std::pair<int32_t, int32_t>>{
           {0, -1}, {2, 0}, {4, 5}, {5, -1}, {7, -1}, {-1, -1}, {INT_MIN, -1}, {INT_MAX, -1}})
    EXPECT_EQ(Call(action), answer) << "action " << action;
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), -1);
  ExpectAbsent();
  EXPECT_TRUE(app.events.empty());
}

TEST_F(ActionTest, VersionGate) {
  struct Case {
    int32_t version, answer;
    bool tables = true, path = true;
  };
  for (const Case& c :
       {Case{23099, -3}, Case{23100, 1}, Case{0, -3}, Case{-1, -3}, Case{INT_MIN, -3}, Case{INT_MAX, 1},
        Case{23100, -3, false}, Case{23100, -3, true, false}, Case{23099, -3, true, false}, Case{23100, 1}}) {
    SCOPED_TRACE(c.version);
    app.ResetTables(c.version);
    app.events.clear();
    const auto open = [&] {
      void* tables = c.tables ? &app.tables : nullptr;
      return c.path ? Open(tables) : Call(QLX_ACTION_OPEN, tables);
    };
    EXPECT_EQ(open(), c.answer);
    EXPECT_EQ(app.events.size(), c.answer == 1 ? 1u : 0u) << "the pair is handed over by an accepted open only";
    EXPECT_EQ(open(), 1) << "a second open only counts";
    EXPECT_EQ(app.events.size(), c.answer == 1 ? 1u : 0u);
    EXPECT_EQ(Message(HOST_MESSAGE_INIT), c.answer == 1 ? 1 : -1);
    EXPECT_EQ(Close(), 1);
    if (c.answer == 1)
      EXPECT_EQ(Close(), 1);
    else
      ExpectRefused();
  }
}

TEST_F(ActionTest, SecondOpenKeepsTheTableAndNeedsASecondClose) {
  EXPECT_EQ(Open(), 1);
  const std::string afterFirst = app.ledger.Left();
  EXPECT_EQ(Open(reinterpret_cast<void*>(8)), 1);
  EXPECT_EQ(app.ledger.Left(), afterFirst);
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), 1);
  EXPECT_TRUE(app.Happened("resource open " + app.startup + "/modules/qlx.res"));
  EXPECT_EQ(Close(), 1);
  EXPECT_FALSE(app.Happened("resource close"));
  EXPECT_EQ(Close(), 1);
  EXPECT_TRUE(app.Happened("resource close"));
}

TEST_F(ActionTest, CloseAheadOfOpenCountsDown) {
  EXPECT_EQ(Close(), 1);
  EXPECT_EQ(Open(), 1);
  EXPECT_FALSE(app.Happened("initialization")) << "this open only brings the count back to zero";
  EXPECT_EQ(Open(), 1);
  EXPECT_TRUE(app.Happened("initialization"));
  EXPECT_EQ(Close(), 1);
}

TEST_F(ActionTest, RefusesAHostThatLacksWhatIsRequired) {
  struct Case {
    const char* name;
    std::function<void(FakeApplication&)> spoil;
    std::string words;
    bool diagnostics;  // the host can still be told
  };
  const Case cases[] = {
      {"no general group", [](auto& a) { a.tables.group[HOST_GROUP_GENERAL] = nullptr; },
       "wanted 'Alloc' at byte 8 of group 1 (general), offered no such group", false},
      {"a general group of its head", [](auto& a) { a.general.size = 8; },
       "wanted 'Alloc' at byte 8 of group 1 (general), offered a group of 8 bytes; wanted 'Free'", false},
      {"half a word", [](auto& a) { a.general.size = 20; },
       "wanted 'Free' at byte 16 of group 1 (general), offered a group of 20 bytes", false},
      {"no memory", [](auto& a) { a.general.Alloc = nullptr; },
       "wanted 'Alloc' at byte 8 of group 1 (general), offered a null word", true},
      {"no hand-over", [](auto& a) { a.general.RegisterModuleInitialization = nullptr; },
       "wanted 'RegisterModuleInitialization' at byte 24 of group 1 (general), offered a null word", true},
      {"no texts", [](auto& a) { a.tables.group[HOST_GROUP_STRING] = nullptr; },
       "wanted 'FromUtf8' at byte 16 of group 5 (string), offered no such group", false},
      {"few groups", [](auto& a) { a.tables.groupCount = 5; },
       "wanted 'FromUtf8' at byte 16 of group 5 (string), offered no such group", false},
      {"no groups", [](auto& a) { a.tables.groupCount = -1; }, "wanted 'Alloc'", false},
      {"texts without copy", [](auto& a) { a.strings.Copy = nullptr; },
       "wanted 'Copy' at byte 24 of group 5 (string), offered a null word", true},
      {"short paths", [](auto& a) { a.filenames.size = offsetof(HostFilenameGroup, Destroy); },
       "wanted 'Destroy' at byte 32 of group 9 (filename), offered a group of 32 bytes", true},
  };
  WatchErrors();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    app.ResetTables();
    c.spoil(app);
    ForgetPrinted();
    EXPECT_EQ(Open(), -3);
    EXPECT_NE(Printed().find(c.words), std::string::npos) << Printed();
    EXPECT_EQ(!app.diagnostics.empty(), c.diagnostics) << Printed();
    EXPECT_FALSE(app.Happened("initialization"));
    ExpectRefused();
  }
  app.ResetTables();
  EXPECT_EQ(Open(), 1) << "a whole host is accepted afterwards";
  EXPECT_EQ(Close(), 1);
}

TEST_F(ActionTest, WorksWithTheRequiredEntriesAlone) {
  WithoutInterpreter();
  app.general.size = offsetof(HostGeneral, GeIsMainThread);
  app.filenames.size = offsetof(HostFilenameGroup, FromString);
  app.strings.size = offsetof(HostStringGroup, Decode);
  for (int32_t group : {HOST_GROUP_BASE_FILE, HOST_GROUP_RESOURCE, HOST_GROUP_PLUGIN})
    app.tables.group[group] = nullptr;
  app.FillPlatformRecord(tavor);
  tavor->ResolveService = nullptr;
  EXPECT_EQ(Open(), 1);
  EXPECT_NE(BringUp(), "") << "no module information can be shown";
  EXPECT_EQ(Message(HOST_MESSAGE_INIT), -1) << "no resource can be opened";
  EXPECT_EQ(Call(QLX_ACTION_PLUGIN_START), 0);
  ExpectAbsent();
  End(-1);
}

TEST_F(ActionTest, YieldDelegateIsThereFromTheStart) {
  ASSERT_NE(*yieldDelegate, nullptr);
  CpuYieldRecord record{4097, 16, 0};
  (*yieldDelegate)(&record, &record);
  EXPECT_EQ(record.count, 4097);
}

}  // namespace
