// Messages of scripts to elements of a plug-in: what arrives, what is answered, and what a script's own code
// and the receiver do to one another meanwhile.
#include <algorithm>
#include <array>
#include <utility>

#include "kelvar.framework/source/tables/t_messages.h"
#include "kelvar/bitmap.h"
#include "kelvar/container.h"
#include "kelvar/descid.h"
#include "kelvar/select.h"
#include "kelvar/value.h"
#include "receiver.h"
#include "scene/scene.h"

namespace {

using MessageTest = ReceiverTest;

DescID IdOf(const HostDescID& word) { return DescID::Copy(word); }
DescID MakeId(std::initializer_list<DescLevel> levels) {
  DescID id;
  for (const DescLevel& level : levels) id.PushId(level);
  return id;
}
constexpr DescLevel kAnswerLevels[] = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {10, 11, 12}};
constexpr HostDescID kAnswerId = {kAnswerLevels, 4, 0};

struct Case {
  int32_t id;
  size_t size;
  const char* sent;
  void (*answer)(void*);
  std::string after;  // of the dictionary `d`
  const char* receiver = "op";
};

TEST_F(MessageTest, DictionariesArriveAndAreAnswered) {
  const std::string id = "answered";
  const Case cases[] = {
      {1, sizeof(HostPointsChanged), "{'old_cnt': 3, 'new_cnt': 2, 'vc_flags': 5, 'map': [0, -1, 1]}",
       [](void* data) {
         auto& m = As<HostPointsChanged>(data);
         EXPECT_EQ((std::array{m.oldCount, m.newCount, m.flags, m.mapCount}), (std::array{3, 2, 5, 3}));
         EXPECT_EQ((std::array{m.map[0], m.map[1], m.map[2]}), (std::array{0, -1, 1}));
         static const int32_t answer[] = {4, 5};
         m = {7, 8, 9, 2, answer};
       },
       "{'old_cnt': 7, 'new_cnt': 8, 'vc_flags': 9, 'map': [4, 5]}"},
      {17, sizeof(HostDescriptionDrag), "{'doc': doc, 'drawflags': 4, 'descid': DescID(7, DescLevel(8))}",
       [](void* data) {
         const auto& m = As<HostDescriptionDrag>(data);
         EXPECT_EQ(m.document, ReceiverTest::Named<BaseDocument>("doc"));
         EXPECT_EQ(m.flags, 4);
         EXPECT_EQ(IdOf(m.id), MakeId({{7, 0, 0}, {8, 0, 0}}));
       },
       "{'doc': doc, 'drawflags': 4, 'descid': DescID(7, DescLevel(8))}"},
      {17, 0, "{'doc': None, 'descid': DescID()}",
       [](void* data) {
         const auto& m = As<HostDescriptionDrag>(data);
         EXPECT_FALSE(m.document || m.id.depth);
       },
       "{'doc': None, 'descid': DescID()}"},
      {18, sizeof(HostDescriptionMessage), "{'id': DescID(5)}",
       [](void* data) {
         EXPECT_EQ(IdOf(As<HostDescriptionMessage>(data).id), MakeId({{5, 0, 0}}));
         As<HostDescriptionMessage>(data).id = kAnswerId;
       },
       "{'id': " + id + "}"},
      {24, sizeof(HostDescriptionMessage), "{'id': DescID(5)}", nullptr, "{'id': DescID(5)}"},
      {25, sizeof(HostDescriptionMessage), "{'id': DescID(5)}", nullptr, "{'id': DescID(5)}"},
      {23, sizeof(HostPrivateData), "{'imexporter': 'unread'}",
       [](void* data) { As<HostPrivateData>(data).node = ReceiverTest::Named<BaseList2D>("other"); },
       "{'imexporter': other}", "loader"},
      {27, sizeof(HostDescriptionBitmap), "{'id': 1000, 'bmpflags': 3, 'bmp': 'unread'}",
       [](void* data) {
         auto& m = As<HostDescriptionBitmap>(data);
         EXPECT_EQ(IdOf(m.id), MakeId({{1000, 0, 0}}));
         EXPECT_EQ(m.flags, 3);
         EXPECT_EQ(m.bmp, nullptr);
         m.bmp = BaseBitmap::Alloc();
         EXPECT_EQ(m.bmp->Init(2, 3, 24, 0), 1);
       },
       "{'id': 1000, 'bmpflags': 3, 'bmp': d['bmp']} and type(d['bmp']) is qlx.bitmaps.BaseBitmap"},
      {27, 0, "{'id': DescID(5, DescLevel(6))}",
       [](void* data) {
         EXPECT_EQ(IdOf(As<HostDescriptionBitmap>(data).id), MakeId({{5, 0, 0}, {6, 0, 0}}));
       },
       "{'id': DescID(5, DescLevel(6)), 'bmp': None}"},
      {1001071, sizeof(HostTextureInfo), "{'external': True, 'start': 2.5, 'animated': True}",
       [](void* data) {
         auto& m = As<HostTextureInfo>(data);
         EXPECT_TRUE(m.external == 1 && m.animated == 1 && m.start == 2.5);
         m = {0, 1, 3.5};
       },
       "{'external': False, 'start': 3.5, 'animated': True}"},
      {1001078, sizeof(HostFileFormat), "{'type': 1, 'fileformat': 2, 'filename': '/a/b'}",
       [](void* data) {
         auto& m = As<HostFileFormat>(data);
         EXPECT_EQ(m.type, 1);
         EXPECT_EQ(m.format, 2);
         EXPECT_STREQ(Filename::Adopt(tables::filename.Copy(&m.name)).GetString().GetUtf8(nullptr), "/a/b");
         tables::filename.Destroy(&m.name);
         m = {3, 4, Filename::FromString(kelvar::Text("/answered")).Release()};
       },
       "{'type': 3, 'fileformat': 4, 'filename': '/answered'}"},
      {1001078, 0, "{'filename': '/a/\\u20ac'}", nullptr,
       "{'type': 0, 'fileformat': 0, 'filename': '/a/\\u20ac'}"},
      {1028476, sizeof(HostObjectAnswer), "{'res': 'unread', 'more': 1}",
       [](void* data) { As<HostObjectAnswer>(data).object = ReceiverTest::Named<BaseList2D>("other"); },
       "{'res': other, 'more': 1}"},
      {1036447, sizeof(HostObjectAnswer), "{}", nullptr, "{'res': None}"},
      {300001001, sizeof(HostManagerCommand), "{'command_id': 1, 'managergroup': 2, 'parentid': -3}",
       [](void* data) {
         auto& m = As<HostManagerCommand>(data);
         EXPECT_EQ((std::array{m.command, m.group, m.parent}), (std::array{1, 2, -3}));
         m = {4, 5, 6};
       },
       "{'command_id': 4, 'managergroup': 5, 'parentid': 6}"},
      {300001046, sizeof(HostDescriptionPopup), "{'id': DescID(5), 'chosen': 2, 'popup': BaseContainer(9)}",
       [](void* data) {
         auto& m = As<HostDescriptionPopup>(data);
         EXPECT_EQ(IdOf(m.id), MakeId({{5, 0, 0}}));
         EXPECT_EQ(m.chosen, 2);
         EXPECT_EQ(m.popup->GetId(), 9);
         m.popup->SetId(10);
         m.chosen = 3;
       },
       "{'id': DescID(5), 'chosen': 3, 'popup': BaseContainer(10)}"},
      {300001069, 0, "{}",
       [](void* data) {
         EXPECT_EQ(As<HostScaleFactor>(data).scale, 1);
         As<HostScaleFactor>(data).scale = 2;
       },
       "{'scale': 2.0}"},
      {300001069, 0, "{'scale': 0.5}", nullptr, "{'scale': 0.5}"},
      {431000094, sizeof(HostTakeOverride),
       "{'_takeData': None, '_overrideTake': op, '_descId': DescID(5), '_parent': other, '_allow': 'unread'}",
       [](void* data) {
         auto& m = As<HostTakeOverride>(data);
         EXPECT_EQ(m.takeData, nullptr);
         EXPECT_EQ(m.overrideTake, ReceiverTest::Named<BaseList2D>("op"));
         EXPECT_EQ(m.parent, ReceiverTest::Named<BaseList2D>("other"));
         EXPECT_EQ(IdOf(m.id), MakeId({{5, 0, 0}}));
         m.parent = ReceiverTest::Named<BaseList2D>("op");
         m.parentId = kAnswerId;
         m.allow = m.overrideEnabled = 1;
       },
       "{'_takeData': None, '_overrideTake': op, '_descId': DescID(5), '_parent': op, '_parentId': " + id +
           ", '_allow': True, '_overrideEnabled': True}"},
      {440000230, sizeof(HostWeights), "{'_weight': 'unread'}",
       [](void* data) {
         static const double weights[] = {0.5, 1};
         As<HostWeights>(data) = {weights, 2, 0};
       },
       "{'_weight': [0.5, 1.0]}"},
      {440000230, 0, "{}", nullptr, "{'_weight': []}"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.id) + " " + c.sent);
    const std::string send = std::string(c.receiver) + ".Message(" + std::to_string(c.id) + ", d)";
    receive = [&](GeListNode*, int32_t, void* data) {
      if (c.answer) c.answer(data);
      return true;
    };
    Run(("d = " + std::string(c.sent)).c_str());
    EXPECT_EQ(Eval(send), "True");
    EXPECT_EQ(told, std::vector{c.id});
    told.clear();
    EXPECT_EQ(Eval("d == " + c.after), "True") << Eval("d");
    // What is missing is zero; what isn't a key of the message stays; a refusal is told.
    receive = [&](GeListNode*, int32_t, void* data) {
      const auto* bytes = static_cast<const char*>(data);
      EXPECT_EQ(std::count(bytes, bytes + c.size, 0), int64_t(c.size));
      return false;
    };
    Run("d = {'more': op, 5: 5}");
    EXPECT_EQ(Eval(send), "False");
    EXPECT_EQ(told.size(), c.id == 17 ? 0U : 1U);
    told.clear();
    EXPECT_EQ(Eval("d['more'] is op and d.pop(5)"), "5");
    EXPECT_EQ(Eval("issubclass(dict, type(d)) and set(map(type, d)) == {str}"), "True");
  }
  Run("del d");
}

TEST_F(MessageTest, TheReceiverGivesASelection) {
  receive = [](GeListNode*, int32_t, void* data) {
    auto& m = As<HostSelectionAnswer>(data);
    EXPECT_EQ(m.sel, nullptr);
    m.sel = BaseSelect::Alloc();
    return m.sel->Select(3);
  };
  Run("d = {'sel': 'unread'}");
  EXPECT_EQ(Eval("op.Message(1021339, d), list(d), type(d['sel']).__name__, d.pop('sel').GetAll(4)"),
            "(True, ['sel'], 'BaseSelect', [0, 0, 0, 1])");
  Run("del d");
}

TEST_F(MessageTest, TheReceiverTellsOfItsIcon) {
  receive = [](GeListNode*, int32_t, void* data) {
    auto& m = As<HostIconSettings>(data);
    EXPECT_EQ(m.file.word, nullptr);
    m = {Filename::FromString(kelvar::Text("/icon")).Release(), 2, 0, {1, 0, 0.5}};
    return true;
  };
  Run("d = {'more': 1}; assert op.Message(1041699, d) is True; s = d.pop('setting')");
  EXPECT_EQ(Eval("d, type(s).__name__, s.filename, s.colorMode, s.color"),
            "({'more': 1}, 'CustomIconSettings', '/icon', 2, Vector(1, 0, 0.5))");
  receive = nullptr;
  Run("op.Message(1041699, d); s = d.pop('setting')");
  EXPECT_EQ(Eval("s.filename, s.colorMode, s.color"), "('', 0, Vector(0, 0, 0))");
  Run("del d, s");
}

TEST_F(MessageTest, TheReceiverDrawsAnIcon) {
  receive = [](GeListNode*, int32_t, void* data) {
    auto& m = As<HostCustomIcon>(data);
    EXPECT_EQ(m.icon.bmp->GetBw() * m.icon.bmp->GetBh() * m.icon.bmp->GetBt(), 32 * 32 * 24);
    EXPECT_EQ((std::array{m.icon.x, m.icon.y, m.icon.w, m.icon.h, m.filled}), (std::array{0, 0, 32, 32, 0}));
    m.icon.x = 4;
    m.filled = 1;
    return true;
  };
  Run("d = {'bmp': 'unread'}\n"
      "assert op.Message(1001090, d) is True\n"
      "bmp = d.pop('bmp'); assert d == {'filled': True, 'x': 4, 'y': 0, 'w': 32, 'h': 32}, d\n"
      "assert bmp.IsAlive() if hasattr(bmp, 'IsAlive') else type(bmp) is qlx.bitmaps.BaseBitmap\n");
  BaseBitmap* own = BaseBitmap::Alloc();
  for (BaseBitmap* answer : {own, static_cast<BaseBitmap*>(nullptr)}) {
    receive = [=](GeListNode*, int32_t, void* data) {
      As<HostCustomIcon>(data).icon = {answer, 1, 2, 3, 4};
      return true;
    };
    EXPECT_EQ(Eval("(op.Message(1001090, d), d.pop('bmp') is None, d)"),
              std::string("(True, ") + (answer ? "False" : "True") +
                  ", {'filled': False, 'x': 1, 'y': 2, 'w': 3, 'h': 4})");
  }
  own->Free();
}

TEST_F(MessageTest, WhatDoesNotFitIsNotSent) {
  const std::string types[] = {"1",       "17",        "18",        "24",        "25",        "27",
                               "1001071", "1001078",   "1001090",   "1021339",   "1028476",   "1036447",
                               "1041699", "300001001", "300001046", "300001069", "431000094", "440000230"};
  for (const std::string& type : types)
    for (const auto& [data, name] : {std::pair{"[]", "list"}, {"None", "None"}, {"op", "qlx.BaseObject"}}) {
      EXPECT_EQ(Eval("fault(" + type + ", " + data + ")"),
                std::string("TypeError: QLXAtom.Message expected dict, not ") + name)
          << type;
    }
  const struct {
    const char *args, *answer;
  } cases[] = {
      {"9, None", "TypeError: QLXAtom.Message expected qlx.BaseContainer, not None"},
      {"9, {}", "TypeError: QLXAtom.Message expected qlx.BaseContainer, not dict"},
      {"22, op", "TypeError: QLXAtom.Message expected qlx.documents.BaseDocument or None, not qlx.BaseObject"},
      {"23, {}", "True"},
      {"23, 5", "True"},
      {"17, {'drawflags': 1}", "False"},
      {"17, {'descid': 5}", "TypeError: Expected qlx.DescID, not int"},
      {"17, {'descid': None}", "TypeError: Expected qlx.DescID, not None"},
      {"17, {'doc': 5}", "TypeError: Expected qlx.GeListNode, not int"},
      {"17, {'doc': op}", "TypeError: Expected qlx.documents.BaseDocument, not qlx.BaseObject"},
      {"1, {'old_cnt': 1.0}", "TypeError: Expected int, not float"},
      {"1, {'old_cnt': 2**31}", "OverflowError: Python int too large to convert to C long"},
      {"1, {'map': (1,)}", "TypeError: Expected list, not tuple"},
      {"1, {'map': [1, 'a']}", "TypeError: Expected int, not str"},
      {"1, {'map': [1, 2**40]}", "OverflowError: Python int too large to convert to C long"},
      {"18, {'id': 5}", "TypeError: Expected qlx.DescID, not int"},
      {"27, {'id': 'a'}", "TypeError: Expected qlx.DescID, not str"},
      {"27, {'id': 2**31}", "OverflowError: Python int too large to convert to C long"},
      {"1001071, {'external': 2.0}", "TypeError: Expected bool, not float"},
      {"1001071, {'start': 'a'}", "TypeError: Expected float, not str"},
      {"1001078, {'filename': b'/a'}", "TypeError: Expected str, not bytes"},
      {"300001046, {'popup': {}}", "TypeError: Expected qlx.BaseContainer, not dict"},
      {"431000094, {'_parent': 5}", "TypeError: Expected qlx.GeListNode, not int"},
      {"431000094, {'_overrideTake': 'a'}", "TypeError: Expected qlx.GeListNode, not str"},
      {"431000094, {'_parent': dead}", "ReferenceError: the object 'qlx.BaseObject' is not alive"},
      {"431000094, {'_takeData': 5}", "TypeError: Expected PyCapsule, not int"},
      {"300001001, arm({key('parentid', lambda: 1 // 0): 2})",
       "ZeroDivisionError: integer division or modulo by zero"},
  };
  for (const auto& c : cases) EXPECT_EQ(Eval(std::string("fault(") + c.args + ")"), c.answer) << c.args;
  EXPECT_TRUE(told.empty());
}

TEST_F(MessageTest, OtherMessagesCarryAValueOrTheObject) {
  const struct {
    const char* value;
    int32_t type;
  } cases[] = {{"None", HOST_DATA_NONE},   {"7", HOST_DATA_INT32},
               {"2**40", HOST_DATA_INT64}, {"0.5", HOST_DATA_FLOAT},
               {"'a'", HOST_DATA_STRING},  {"Vector(1)", HOST_DATA_VECTOR},
               {"op", HOST_DATA_LINK},     {"BaseContainer(3)", HOST_DATA_CONTAINER}};
  for (const auto& c : cases) {
    receive = [&](GeListNode*, int32_t, void* data) {
      EXPECT_EQ(As<HostGeData>(data).type, c.type) << c.value;
      return true;
    };
    EXPECT_EQ(Eval(std::string("op.Message(4711, ") + c.value + ")"), "True");
    EXPECT_EQ(std::exchange(told, {}), std::vector{4711});
  }
  for (const char* object : {"{}", "[1]", "print", "2**70", "dead"}) {
    void* sent = nullptr;
    receive = [&](GeListNode*, int32_t id, void* data) {
      if (id == HOST_MSG_PYTHON_DATA) return As<HostBool>(data) == 1;
      sent = data;
      EXPECT_GT(Py_REFCNT(static_cast<PyObject*>(data)), 0);
      return true;
    };
    const std::string answer = Eval(std::string("(lambda d: (op.Message(4711, d), id(d)))(") + object + ")");
    EXPECT_EQ(answer, "(True, " + std::to_string(reinterpret_cast<uintptr_t>(sent)) + ")") << object;
    EXPECT_EQ(std::exchange(told, {}), (std::vector<int32_t>{HOST_MSG_PYTHON_DATA, 4711}));
  }
  receive = [](GeListNode*, int32_t, void* data) { return data == nullptr; };
  EXPECT_EQ(Eval("[op.Message(type) for type in (1, 9, 22, 23, 4711, 1021339)], op.Message(22, None)"),
            "([True, True, True, True, True, True], True)");
  EXPECT_EQ(Eval("all(op.Message(type, d) for type in (5, 1001077, 1023742, 1026945) for d in (5, {}, print))"),
            "True");
  receive = [](GeListNode*, int32_t, void* data) { return data == ReceiverTest::Named<BaseDocument>("doc"); };
  EXPECT_EQ(Eval("op.Message(22, doc), op.MultiMessage(0, 22, doc)"), "(True, True)");
  // The receiver changes a script's container, that of another element, and only a copy of an entry.
  receive = [](GeListNode*, int32_t, void* data) { return As<BaseContainer>(data).SetId(5), true; };
  Run("bc, view = BaseContainer(1), other.GetDataInstance()\n"
      "bc.SetContainer(1, BaseContainer(2)); entry = bc.GetContainerInstance(1)\n"
      "assert op.Message(9, bc) and bc.GetId() == 5\n"
      "assert op.Message(9, view) and view.GetId() == 5\n"
      "assert op.Message(9, entry) and entry.GetId() == 2\n"
      "del bc, view, entry\n");
}

TEST_F(MessageTest, MessagesGoToOthersByFlags) {
  Run("parent, child, below, tag = BaseList2D(2000001), BaseList2D(2000001), BaseList2D(2000001), None\n"
      "op.InsertUnder(parent); child.InsertUnder(op); below.InsertUnder(child)\n");
  for (const auto& [flags, count] :
       {std::pair{0, 1}, {int(MULTIMSG_UP), 2}, {int(MULTIMSG_DOWN), 3}, {7, 4}, {-1, 4}}) {
    receive = [](GeListNode*, int32_t, void* data) { return ++As<HostManagerCommand>(data).command, false; };
    Run("d = {}");
    EXPECT_EQ(Eval("op.MultiMessage(" + std::to_string(flags) + ", 300001001, d), d['command_id']"),
              "(False, " + std::to_string(count) + ")");
  }
  EXPECT_EQ(Eval("op.MultiMessage(2, 17, {})"), "False");
  Run("del parent, child, below, tag\nop = BaseList2D(2000001)\ndel d\n");
}

// Nothing that a message points at may go while it is under way; what went is dead behind it.
TEST_F(MessageTest, ReceiversDestroyWhatTheyAreSent) {
  const struct {
    std::vector<const char*> destroyed;
    const char *message, *after;
  } cases[] = {
      {{"op"}, "op.Message(1, d)", "d == {'old_cnt': 0, 'new_cnt': 0, 'vc_flags': 0, 'map': []}"},
      {{"op"}, "op.Message(18, {'id': DescID(5)})", "True"},
      {{"op"}, "op.Message(4711, 5)", "True"},
      {{"op"}, "op.Message(9, BaseContainer(5))", "True"},
      {{"op"}, "op.Message(9, op.GetDataInstance())", "True"},
      {{"op", "other"},
       "op.Message(431000094, d.update(_parent=other, _overrideTake=op) or d)",
       "d['_parent']() is None and d['_overrideTake'] is op"},
      {{"other"},
       "op.Message(300001046, d.update(popup=other.GetDataInstance()) or d)",
       "d['popup'].GetId() == 7"},
      {{"doc"}, "op.Message(22, doc)", "True"},
      {{"doc", "op"}, "op.Message(17, {'doc': doc, 'descid': DescID(1)})", "True"},
      {{"op"}, "op.Message(4711, object())", nullptr},  // the object has nobody to go to
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.message);
    Run("op, other, doc, d = BaseList2D(2000001), BaseList2D(2000001), BaseDocument(), {}");
    receive = [&](GeListNode*, int32_t id, void* data) {
      receive = nullptr;
      for (const char* name : c.destroyed) ReceiverTest::Named<BaseList2D>(name)->Free();
      if (id == HOST_MSG_DESCRIPTION_POPUP) As<HostDescriptionPopup>(data).popup->SetId(7);
      if (id == HOST_MSG_EDIT) {
        EXPECT_GE(As<BaseContainer>(data).GetCount(), 0);
      }
      return true;
    };
    Run((std::string("try: answer = ") + c.message + "\nexcept ReferenceError: answer = 'dead'").c_str());
    EXPECT_EQ(Eval("answer"), c.after ? "True" : "dead");
    EXPECT_EQ(Eval(c.after ? c.after : "True"), "True") << Eval("d");
  }
  Run("d = None");
}

// A script's own code runs while its dictionary is read, and where the receiver asks it.
TEST_F(MessageTest, ScriptsInterfere) {
  Run("def under(parent):\n"
      "  child = BaseList2D(2000001); child.InsertUnder(parent); return child\n"
      "def drop(*names):\n"
      "  def act():\n"
      "    Key.isArmed = False\n"
      "    for name in names: globals().pop(name).clear() if name == 'd' else globals().pop(name)\n"
      "    gc.collect()\n"
      "  return act\n");
  const struct {
    const char* prepare;
    bool isSent;
  } cases[] = {
      // The element that is sent ends with its holder: it is the message's until then, or refused.
      {"holder = BaseObject(5140); d = {key('_overrideTake', drop('holder')): 1, '_parent': under(holder)}",
       false},
      {"holder = BaseObject(5140); d = {key('_parent', drop('holder')): 1, '_parent': under(holder)}", false},
      {"d = {'_parent': other, key('_descId', drop('d')): 1}", true},
      // The receiver ends: the message has nobody to go to.
      {"holder = BaseObject(5140); to = under(holder); d = {key('_parent', drop('holder')): 1}", false},
  };
  for (const auto& c : cases) {
    Run((std::string("to = op\n") + c.prepare).c_str());
    Run("try: answer = to.Message(431000094, arm(d))\n"
        "except ReferenceError: answer = 'ReferenceError'\n");
    EXPECT_EQ(Eval("answer"), c.isSent ? "True" : "ReferenceError") << c.prepare;
    EXPECT_EQ(std::exchange(told, {}).size(), size_t(c.isSent)) << c.prepare;
  }
  // A receiver that runs a script: one that raises, one that sends on, one that takes the dictionary apart.
  const auto run = [](const char* source) {
    PyObject* done = PyRun_String(source, Py_file_input, Names(), Names());
    if (!done) PyErr_Clear();
    Py_XDECREF(done);
    return done != nullptr;
  };
  receive = [&](GeListNode*, int32_t, void*) { return run("1 // 0"); };
  EXPECT_EQ(Eval("[op.Message(300001069, {}), op.Message(5, {})]"), "[False, False]");
  int depth = 0;
  receive = [&](GeListNode*, int32_t, void* data) {
    auto& m = As<HostManagerCommand>(data);
    if (++depth < 20) run("other.Message(300001001, d)");
    m.command += 1;
    return true;
  };
  // Each of them reads the dictionary that nobody has written yet.
  Run("d = {'command_id': 1}");
  EXPECT_EQ(Eval("op.Message(300001001, d), d['command_id']"), "(True, 2)");
  EXPECT_EQ(depth, 20);
  receive = [&](GeListNode*, int32_t, void* data) {
    run("d['popup'].SetId(3); d['id'].PushId(DescLevel(1)); d['id'].PushId(DescLevel(1))\n"
        "d['id'].PushId(DescLevel(1)); d.clear(); gc.collect()\n");
    const auto& m = As<HostDescriptionPopup>(data);
    EXPECT_EQ(IdOf(m.id), MakeId({{5, 0, 0}}));
    EXPECT_EQ(m.popup->GetId(), 3);
    return true;
  };
  Run("d = {'id': DescID(5), 'popup': BaseContainer(2)}\n"
      "assert op.Message(300001046, d)\n"
      "assert d == {'id': DescID(5), 'chosen': 0, 'popup': BaseContainer(3)}, d\n"
      "del d, drop, under\n");
}

}  // namespace
