// Wrappers and the real host: elements that die while scripts use them, and the record of leaks.
#include <Python.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "interpreter/lib_python_leaks.h"
#include "interpreter/lib_python_lock.h"
#include "interpreter/lib_python_scriptscope.h"
#include "kelvar/baselist.h"
#include "kit/i_wrapper.h"
#include "linked_support.h"
#include "plugins/plugins.h"
#include "scene/links.h"
#include "scene/scene.h"
#include "values/values.h"

namespace {

constexpr int32_t kCube = 5159;

// The host's own destruction, which needs no lock. Both sides know the object by the same pointer.
void Destroy(BaseList2D* element) { host::DestroyLater(reinterpret_cast<host::Linkable*>(element)); }

TEST_F(LinkedTest, AnEntryOfATypedContainerKeepsItsType) {
  Set("bc", qlx::NewBaseContainer(BaseContainer::Alloc(0), true, true, nullptr));
  Run("from qlx import BaseContainer, BaseTime, Matrix, Vector\n"
      "def fault(id, value):\n"
      "  try: bc[id] = value\n"
      "  except TypeError as error: return str(error)\n"
      "cases = [(1.0, 'float', 7), (Vector(), 'qlx.Vector', Vector(1)), (True, 'int or bool', 1), (2**40, "
      "'long', 1),\n"
      "  ('a', 'str', 'b'), (Matrix(), 'qlx.Matrix', Matrix()), (BaseContainer(), 'qlx.BaseContainer', "
      "BaseContainer(3)),\n"
      "  (BaseTime(), 'qlx.BaseTime', BaseTime(1, 3))]\n"
      "for id, (first, word, second) in enumerate(cases):\n"
      "  bc[id] = first\n"
      "  for wrong in (None, fault):\n"
      "    name = 'None' if wrong is None else 'function'\n"
      "    assert fault(id, wrong) == f'__setitem__ expected {word}, not {name}', (first, wrong)\n"
      "    assert bc[id] == first\n"
      "  bc[id] = second\n"
      "  assert bc[id] == second\n"
      "assert fault(3, 5) is None and (bc[3], bc.GetType(3)) == (5, 26)\n"
      "bc[3] = -2**40; assert bc[3] == -2**40\n"
      "for wrong in (2**31, -2**31 - 1, 2**70):\n"
      "  assert fault(2, wrong) == '__setitem__ expected int or bool, not int'\n"
      "assert bc[2] == 1 and bc.GetType(2) == 15\n"
      "assert bc.GetType(0) == 19 and fault(0, 'a') == '__setitem__ expected float, not str'\n"
      "bc.SetString(0, 'a'); assert bc[0] == 'a'\n"
      "del bc[0]; bc[0] = Vector(); assert bc[0] == Vector()\n"
      "copy = BaseContainer(bc); copy[0] = 1; assert copy[0] == 1\n"
      "del bc, copy, cases, first, second, fault\n");
}

// Such a host is asked for the container in an entry each time.
TEST_F(LinkedTest, InstancesNeedNoCountOfTheHost) {
  tables::container.GetInstanceEpoch = [] { return uint64_t(0); };
  Run("from qlx import BaseContainer\n"
      "bc = BaseContainer()\n"
      "bc[1] = BaseContainer(1); bc[1] = bc\n"
      "outer = bc.GetContainerInstance(1); inner = outer.GetContainerInstance(1)\n"
      "inner[5] = 5; assert bc[1][1][5] == 5 and inner.GetId() == 1\n"
      "outer[1] = BaseContainer(2); assert inner.GetId() == 2 and len(inner) == 0\n"
      "for change in (bc.FlushAll, lambda: bc.SetContainer(1, BaseContainer()), lambda: bc.SetInt32(1, 1)):\n"
      "  change()\n"
      "  try: inner.GetId()\n"
      "  except ReferenceError: continue\n"
      "  assert False, change\n"
      "del bc, outer, inner, change\n");
}

// Whatever a script does with an element that dies meanwhile, it gets the element or ReferenceError.
TEST_F(LinkedTest, ThreadsUseElementsThatTheHostDestroys) {
  constexpr int kElements = 16;
  std::vector<BaseList2D*> elements;
  PyObject* list = PyList_New(kElements);
  const auto renew = [&](int i) {
    elements[size_t(i)] = BaseList2D::Alloc(kCube);
    PyList_SetItem(list, i, qlx::WrapHostObject(elements[size_t(i)], false));
  };
  elements.resize(kElements);
  for (int i = 0; i < kElements; ++i) renew(i);
  Py_INCREF(list);
  Set("elements", list);
  Run("import sys, threading\n"
      "sys.setswitchinterval(1e-5)\n"
      "ends, faults, uses, deaths = [], [], [0] * 8, [0] * 8\n"
      "calls = [\n"
      "  lambda op: op.GetName() == 'Cube', lambda op: op.GetType() == 5159, lambda op: "
      "op.IsInstanceOf(5155),\n"
      "  lambda op: op == op, lambda op: op() in (op, None), lambda op: op.SetName('Cube') is None,\n"
      "  lambda op: op.GetDataInstance().GetId() == 0, lambda op: op.GetDataInstance().SetId(0) is None,\n"
      "  lambda op: op.IsAlive() in (True, False), lambda op: op.GetDataInstance() == op.GetDataInstance()]\n"
      "def work(number):\n"
      "  while not ends:\n"
      "    for i in range(len(elements)):\n"
      "      op = elements[i]\n"
      "      for call in calls:\n"
      "        try:\n"
      "          if call(op) is not True: faults.append(call.__code__.co_firstlineno)\n"
      "          uses[number] += 1\n"
      "        except ReferenceError as error:\n"
      "          if not str(error).endswith(' is not alive'): faults.append(error)\n"
      "          deaths[number] += 1\n"
      "        except BaseException as error: faults.append(error)\n"
      "threads = [threading.Thread(target=work, args=(i,)) for i in range(8)]\n"
      "for thread in threads: thread.start()\n");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
  int rounds = 0;
  for (int from = 0; std::chrono::steady_clock::now() < end; from = (from + 4) % kElements) {
    {
      const qlx::HostBlockingScope withoutLock;
      for (int i = from; i < from + 4; ++i) Destroy(elements[size_t(i)]);
      host::ReclaimDestroyed();
    }
    for (int i = from; i < from + 4; ++i) renew(i);
    ++rounds;
  }
  Run("ends.append(1)\n"
      "for thread in threads: thread.join()\n"
      "assert not faults, faults[:5]\n"
      "assert all(uses) and sum(deaths) > 0, (uses, deaths)\n"
      "for op in elements: op.IsAlive()\n");
  EXPECT_GT(rounds, 1000);
  for (BaseList2D* element : elements) Destroy(element);
  {
    const qlx::HostBlockingScope withoutLock;
    host::ReclaimDestroyed();
  }
  Run("for op in elements: assert op() is None");
  Py_DECREF(list);
}

// That of the host is dead when the host closes it; one that the scope took over ends with its last wrapper, on
// whatever thread, or at once where there is none.
TEST_F(LinkedTest, ResourcesEndWithTheirOwner) {
  const Filename folder = Filename::FromString(kelvar::Text(HOST_STARTUP "/qlx.res"));
  HostLink links[3] = {};
  GeResource* resources[3] = {};
  for (int i = 0; i < 3; ++i) {
    resources[i] = GeResource::Open(folder);
    ASSERT_TRUE(resources[i] && resources[i]->SetLink(&links[i]));
  }
  qlx::ScriptScope scope;
  ASSERT_TRUE(scope.Init() && scope.SetResource("shown", resources[0], false));
  EXPECT_TRUE(scope.SetResource("__res__", resources[1], true));
  EXPECT_FALSE(scope.SetResource("\xff", resources[2], true));
  EXPECT_FALSE(scope.SetResource("none", nullptr, true) || scope.Contains("none"));
  EXPECT_TRUE(kelvar::GetLink(links[1]) && !kelvar::GetLink(links[2]));
  EXPECT_TRUE(
      scope.Run("import threading\n"
                "assert type(shown) is type(__res__) and shown != __res__\n"
                "try: type(shown)()\n"
                "except NotImplementedError as error: assert str(error) == 'this type cannot be "
                "instantiated'\n"
                "else: assert False\n"
                "thread = threading.Thread(target=globals().pop, args=('__res__',))\n"
                "thread.start(); thread.join(); del thread\n",
                "resource"));
  EXPECT_FALSE(scope.Contains("__res__") || kelvar::GetLink(links[1]));
  GeResource* found = nullptr;
  EXPECT_TRUE(qlx::Present<GeResource>::Get(scope.Get("shown"), found) && found == resources[0]);
  resources[0]->Close();
  EXPECT_FALSE(qlx::Present<GeResource>::Get(scope.Get("shown"), found));
  PyObject *type, *value, *trace;
  PyErr_Fetch(&type, &value, &trace);
  EXPECT_EQ(type, PyExc_ReferenceError);
  EXPECT_STREQ(PyUnicode_AsUTF8(value), "the object 'qlx.plugins.GeResource' is not alive");
  for (PyObject* object : {type, value, trace}) Py_XDECREF(object);
  scope.Free();
}

class LeakTest : public LinkedTest {
 protected:
  void SetUp() override { Start(true); }
};

// tests/python has those of scripts.
TEST_F(LeakTest, InstancesMadeOutsideOfScriptsAreToldByTheModulesLine) {
  Set("early", qlx::NewVector({}));
  Set("other", qlx::WrapHostObject(BaseList2D::Alloc(kCube), true));
  qlx::ReportLeaks();
  ASSERT_EQ(diagnostics.size(), 5U);
  EXPECT_EQ(diagnostics[3], "2 objects\n\n");
  std::sort(diagnostics.begin() + 1, diagnostics.begin() + 3);
  const auto expect = [](const std::string& told, const std::string& file, const std::string& type) {
    const std::string_view rest(told);
    const std::string head = "modules/python/source/" + file + " - memleak outside Python context(";
    EXPECT_TRUE(rest.starts_with(head) && rest.ends_with("): " + type)) << told;
    EXPECT_EQ(rest.substr(head.size()).find_first_not_of("0123456789"),
              rest.size() - head.size() - type.size() - 3);
  };
  expect(diagnostics[1], "scene/wraphostobject.cpp", "qlx.BaseObject");
  expect(diagnostics[2], "values/values.h", "qlx.Vector");
  Run("del early, other");
  EXPECT_EQ(diagnostics.size(), 7U);
}

}  // namespace
