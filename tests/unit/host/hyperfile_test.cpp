// Files of tagged values: their bytes, damage of every kind, and the elements in them.

#include "files/hyperfile.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstring>
#include <iterator>

#include "scene/extras.h"
#include "scene_support.h"

namespace {

namespace atom = host::atom;
namespace fs = std::filesystem;
using host::listnode::InsertUnderLast;

constexpr int32_t kInstance = 5126, kShown = 1000, kLayerType = 100004801, kPluginType = 2000077;

std::string BytesOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class HyperFileTest : public Scene {
 protected:
  bool Open(HyperFile& file, int32_t mode, int32_t ident = 0) { return file.Open(ident, path_, mode); }

  template <class Fill>
  void Write(Fill fill) {
    HyperFile file;
    ASSERT_TRUE(Open(file, HYPERFILE_WRITE));
    fill(file);
    EXPECT_TRUE(file.Close()) << file.error;
  }

  // Truncating one that is there would wait for the disk.
  void Put(const std::string& bytes) {
    fs::remove(path_);
    folder_.Write("file", bytes);
  }

  // Reads everything that can be read, as values and as an element.
  void ReadAnything() {
    for (const bool asElement : {false, true}) {
      HyperFile file;
      if (!Open(file, HYPERFILE_READ)) return;
      const Element element(New());
      if (asElement) atom::ReadObject(element.get(), &file, 1);
      BaseContainer container;
      host::Value data;
      for (int32_t id, level;;) {
        const int32_t tag = file.NextTag();
        const bool isRead = tag == HYPERFILE_VALUE_CHUNK_START ? file.EnterChunk(id, level)
                            : tag == HYPERFILE_VALUE_CONTAINER ? file.ReadContainer(container)
                            : tag == HYPERFILE_VALUE_DATA      ? file.ReadData(data)
                                                               : file.Skip(tag);
        if (!isRead && !file.Skip(tag) && !file.LeaveChunk(true)) break;
      }
    }
  }

  TempFolder folder_;
  const std::string path_ = (folder_.Path() / "file").string();
};

TEST_F(HyperFileTest, Bytes) {
  Write([](HyperFile& file) {
    EXPECT_TRUE(file.BeginChunk(7, -1) && file.WriteInt32(258) &&
                file.WriteSized(HYPERFILE_VALUE_STRING, "ab") && file.EndChunk());
  });
  const std::string expected(
      "\x89QLX\r\n\x1a\n\1\0\0\0\0\0\0\0\x22\0\0\0\0\0\0\0"
      "\1\7\0\0\0\xff\xff\xff\xff\x10\0\0\0\0\0\0\0"
      "\10\2\1\0\0"
      "\23\2\0\0\0\0\0\0\0ab"
      "\2",
      24 + 17 + 5 + 11 + 1);
  std::string bytes = BytesOf(path_);
  EXPECT_EQ(bytes, expected);

  HyperFile file;
  const struct {
    size_t at;
    char byte;
    int32_t error;
  } cases[] = {{0, 'x', HYPERFILE_ERROR_FORMAT},    {7, 'x', HYPERFILE_ERROR_FORMAT},
               {8, 2, HYPERFILE_ERROR_VERSION},     {8, 0, HYPERFILE_ERROR_FORMAT},
               {12, 1, HYPERFILE_ERROR_IDENT},      {16, 1, HYPERFILE_ERROR_FORMAT},
               {23, '\x80', HYPERFILE_ERROR_FORMAT}};
  for (const auto& c : cases) {
    bytes = expected;
    bytes[c.at] = c.byte;
    folder_.Write("file", bytes);
    EXPECT_FALSE(Open(file, HYPERFILE_READ));
    EXPECT_EQ(file.error, c.error) << c.at;
  }
  for (const char* other : {"", "none", "folder"}) {
    fs::create_directory(folder_.Path() / "folder");
    const std::string path = *other ? folder_.Path() / other : "";
    EXPECT_FALSE(file.Open(0, path, HYPERFILE_READ));
    EXPECT_EQ(file.error, HYPERFILE_ERROR_OPEN) << other;
  }
  EXPECT_FALSE(file.Open(0, folder_.Path() / "folder", HYPERFILE_WRITE));
  EXPECT_FALSE(file.Open(0, folder_.Path() / "none/file", HYPERFILE_WRITE));
}

TEST_F(HyperFileTest, LongAndShortFiles) {
  const std::string block(3000000, 'x');
  Write([&](HyperFile& file) {
    EXPECT_TRUE(file.BeginChunk(1, 2));
    for (int32_t i = 0; i < 400000; ++i) ASSERT_TRUE(file.WriteInt32(i));
    EXPECT_TRUE(file.WriteSized(HYPERFILE_VALUE_MEMORY, block) && file.BeginChunk(3, 4) && file.EndChunk());
    EXPECT_TRUE(file.EndChunk());
  });
  HyperFile file;
  ASSERT_TRUE(Open(file, HYPERFILE_READ));
  int32_t id, level, number;
  ASSERT_TRUE(file.EnterChunk(id, level));
  for (int32_t i = 0; i < 400000; ++i) ASSERT_TRUE(file.ReadInt32(number) && number == i);
  EXPECT_FALSE(file.LeaveChunk(false));
  std::string bytes;
  EXPECT_TRUE(file.ReadSized(HYPERFILE_VALUE_MEMORY, bytes) && bytes == block);
  EXPECT_TRUE(file.EnterChunk(id, level) && !file.EnterChunk(id, level) && file.LeaveChunk(false));
  EXPECT_TRUE(file.LeaveChunk(false) && file.IsAtEnd());

  // One that becomes shorter while it is read.
  fs::resize_file(path_, 100);
  file.GoTo({24, {}});
  ASSERT_TRUE(file.Close() && !Open(file, HYPERFILE_READ));
  EXPECT_EQ(file.error, HYPERFILE_ERROR_FORMAT);
}

TEST_F(HyperFileTest, WhatWasThereStays) {
  folder_.Write("file", "old");
  const auto is = [&](const char* content, int files) {
    EXPECT_EQ(BytesOf(path_), content);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.Path()), {}), files);
  };
  HyperFile file;
  ASSERT_TRUE(Open(file, HYPERFILE_WRITE) && file.WriteInt32(1) && file.BeginChunk(1, 1));
  is("old", 2);
  EXPECT_FALSE(file.Close());
  EXPECT_EQ(file.error, HYPERFILE_ERROR_USE);
  is("old", 1);

  // A full disk: a process may only write so much.
  const pid_t full = fork();
  if (full == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    setrlimit(RLIMIT_FSIZE, &limit);
    HyperFile child;
    const std::string block(2000000, 'x');
    const bool isWritten = Open(child, HYPERFILE_WRITE) && child.WriteSized(HYPERFILE_VALUE_MEMORY, block);
    const bool isLost = !child.WriteInt32(1) && child.error == HYPERFILE_ERROR_WRITE && !child.Close();
    _exit(!isWritten && isLost ? 0 : 1);
  }
  int status = -1;
  waitpid(full, &status, 0);
  EXPECT_EQ(status, 0);
  is("old", 1);

  const pid_t killed = fork();
  if (killed == 0) {
    HyperFile child;
    if (Open(child, HYPERFILE_WRITE) && child.WriteInt32(1)) kill(getpid(), SIGKILL);
    _exit(1);
  }
  waitpid(killed, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status));
  is("old", 2);

  fs::permissions(path_, fs::perms(0640));
  fs::create_symlink("file", folder_.Path() / "link");
  ASSERT_TRUE(file.Open(0, folder_.Path() / "link", HYPERFILE_WRITE) && file.Close());
  EXPECT_TRUE(fs::is_symlink(folder_.Path() / "link"));
  EXPECT_EQ(fs::status(path_).permissions(), fs::perms(0640));
  EXPECT_TRUE(Open(file, HYPERFILE_READ) && file.IsAtEnd() && file.Close());

  fs::create_symlink("later", folder_.Path() / "early");  // to a file that isn't there yet
  ASSERT_TRUE(file.Open(0, folder_.Path() / "early", HYPERFILE_WRITE) && file.Close());
  EXPECT_TRUE(fs::is_symlink(folder_.Path() / "early") && fs::is_regular_file(folder_.Path() / "later"));
}

TEST_F(HyperFileTest, Containers) {
  BaseContainer shared(1), deep(2);
  host::Put(shared, 1, host::Value::Int32(5));
  for (int i = 0; i < 60; ++i) {  // 2^60 when each is written for itself
    BaseContainer outer(i);
    for (const int32_t id : {1, 2}) host::Put(outer, id, host::Value(std::make_unique<BaseContainer>(shared)));
    shared = outer;
  }
  for (int i = 0; i < 100000; ++i) {
    BaseContainer outer(i);
    host::Put(outer, 1, host::Value(std::make_unique<BaseContainer>(std::move(deep))));
    deep = std::move(outer);
  }
  BaseContainer twice(3);
  for (int i = 0; i < 40; ++i) {
    const host::Value value = host::Value::Int32(i);
    host::container::InsData(&twice, i % 20, &value.Data());
  }
  for (int i = 0; i < 10; ++i) host::container::RemoveData(&twice, i);  // gaps
  Write([&](HyperFile& file) {
    for (const BaseContainer* one : {&shared, &deep, &twice}) EXPECT_TRUE(file.WriteContainer(*one));
  });
  EXPECT_LT(fs::file_size(path_), 4000000u);
  HyperFile file;
  ASSERT_TRUE(Open(file, HYPERFILE_READ));
  for (const BaseContainer* one : {&shared, &deep, &twice}) {
    BaseContainer read;
    ASSERT_TRUE(file.ReadContainer(read));
    EXPECT_TRUE(read == *one);
    EXPECT_EQ(read.id, one->id);
  }
}

// A tree with what an element can have: children, a tag, a track, a link, a layer, user data, marks, bits.
struct Tree {
  Element document{New(110059)};
  BaseList2D *root = New(), *cube = New(kCube), *instance = New(kInstance), *layer = New(kLayerType);
  BaseList2D* tag = New(kTexture);
  GeListNode* track = nullptr;

  Tree() {
    InsertUnderLast(cube, root);
    InsertUnderLast(instance, cube);
    host::Place(*root, *HeadFor(document.get(), 5155), nullptr);
    host::Place(*layer, *HeadFor(document.get(), kLayerType), nullptr);
    host::Place(*tag, *HeadFor(cube, 5694), nullptr);
    const DescLevel level{903, 23, 0};
    const HostDescID id{&level, 1, 0};
    track = host::track::Alloc(cube, &id);
    host::Place(*track, *HeadFor(cube, host::kTypeTrack), nullptr);
    SetName(document.get(), "scene");
    SetName(root, "root");
    SetName(tag, "tag");
    SetLinkEntry(instance->data, kShown, cube);
    SetLinkEntry(cube->data, 99, document.get());
    host::baselist::SetLayerObject(cube, layer);
    HostLayerData says;
    host::baselist::GetLayerData(layer, nullptr, &says, 1);
    says.locked = 1;
    says.color = {.1, .2, .3};
    host::baselist::SetLayerData(layer, nullptr, &says);
    BaseContainer settings;
    host::Put(settings, DESC_NAME, host::Value::Text("added"));
    host::Put(settings, DESC_DATATYPE, host::Value::Int32(DTYPE_REAL));
    DescLevel levels[2];
    HostDescID added{levels, 0, 0};
    host::dynamicdescription::Alloc(host::baselist::GetDynamicDescription(cube), &settings, &added);
    const host::Value value = host::Value::Float(2.5);
    atom::SetParameter(cube, &added, &value.Data(), 0);
    atom::AddUniqueID(tag, 7, "mark", 4);
    host::baselist::SetKeyframeSelection(cube, &id, 1);
    host::baselist::SetAllBits(cube, 0x42);
    cube->Extra().nbits = 9;
  }
};

// What is in a tree, as a text.
std::string Describe(const BaseList2D& root) {
  std::string text;
  host::Walk(const_cast<BaseList2D&>(root), [&](GeListNode& node) {
    if (host::IsHead(node)) return;
    const auto& element = static_cast<BaseList2D&>(node);
    text += std::to_string(element.type.id) + std::string(element.name) + std::to_string(element.bits);
    for (const int32_t id : {kShown, 99}) {
      const HostGeData* data = host::container::FindData(&element.data, id);
      const void* goal = data && data->type == HOST_DATA_LINK ? GoalOf(element.data, id) : nullptr;
      if (goal) text += "->" + std::string(static_cast<const BaseList2D*>(goal)->name);
    }
    HostLayerData says;
    if (host::baselist::GetLayerData(&element, nullptr, &says, 1))
      text += " layer" + std::to_string(says.locked + says.color.y);
    if (element.dynamic && !element.dynamic->entries->empty()) {
      HostGeData value{};
      const HostDescID id = element.dynamic->entries->front().Id();
      atom::GetParameter(&element, &id, &value, 0);
      text += " added" + std::to_string(value.value.real);
    }
    if (const auto* track = host::As<CTrack>(&node)) text += " of" + std::to_string(track->parameter.at(0).id);
    if (element.extras)
      text += " " + std::to_string(element.extras->marks.size()) +
              std::to_string(element.extras->keyframes.size()) + std::to_string(element.extras->nbits);
    text += element.up ? " below\n" : "\n";
  });
  return text;
}

TEST_F(HyperFileTest, Trees) {
  Tree tree;
  const std::string whole = Describe(*tree.document), part = Describe(*tree.root);
  for (const char* word : {"->Cube", "layer1.2", "added2.5", " of903"})
    EXPECT_NE(whole.find(word), whole.npos) << word << whole;
  Write([&](HyperFile& file) {
    EXPECT_TRUE(atom::WriteObject(tree.document.get(), &file));
    EXPECT_TRUE(file.BeginChunk(1, 1) && atom::WriteObject(tree.root, &file) && atom::Write(tree.cube, &file) &&
                file.EndChunk());
    EXPECT_FALSE(atom::WriteObject(HeadFor(tree.root, 5694), &file));
    EXPECT_EQ(file.error, HYPERFILE_ERROR_NODE);
  });
  HyperFile file;
  ASSERT_TRUE(Open(file, HYPERFILE_READ));
  Tree other;  // what it holds goes
  const host::Hold gone(*other.cube);
  ASSERT_TRUE(atom::ReadObject(other.document.get(), &file, 1)) << file.error;
  EXPECT_EQ(Describe(*other.document), whole);
  EXPECT_FALSE(gone.IsAlive());
  EXPECT_NE(Describe(*other.document).find("->scene"), whole.npos);

  int32_t id, level;
  ASSERT_TRUE(file.EnterChunk(id, level));
  const Element cube(New(kCube)), root(New());
  const auto place = file.Here();
  EXPECT_FALSE(atom::ReadObject(cube.get(), &file, 1));  // another type
  EXPECT_FALSE(atom::ReadObject(root.get(), &file, 0));  // not entered
  EXPECT_EQ(file.Here().position, place.position);
  EXPECT_EQ(Describe(*root), "5140Null0\n");
  ASSERT_TRUE(file.EnterChunk(id, level) && atom::ReadObject(root.get(), &file, 0) && file.LeaveChunk(false));
  EXPECT_EQ(id, kNull);
  EXPECT_EQ(root->down->down->type.id, kInstance);
  EXPECT_EQ(GoalOf(static_cast<BaseList2D*>(root->down->down)->data, kShown), root->down);
  EXPECT_EQ(host::baselist::GetLayerObject(static_cast<BaseList2D*>(root->down), nullptr),
            nullptr);  // not in it
  EXPECT_FALSE(atom::Read(cube.get(), &file, kNull, 1));
  EXPECT_TRUE(atom::Read(cube.get(), &file, kCube, 1) && file.LeaveChunk(false));
  EXPECT_EQ(cube->down, nullptr);
  EXPECT_NE(Describe(*cube).find("added2.5"), std::string::npos);
}

// A file may say anything of where its elements stand.
TEST_F(HyperFileTest, NodesThatMayNotStandThereAreLeftOut) {
  const Element document(New(host::kTypeDocument)), read(New(host::kTypeDocument));
  BaseList2D* mesh = New(host::kTypePolygonObject);
  GeListHead* objects = HeadFor(document.get(), host::kTypeObject);
  const std::pair<int32_t, GeListNode*> wrong[] = {{kMaterial, objects},
                                                   {host::kTypeDocument, mesh},
                                                   {kNull, document.get()},
                                                   {host::kDataPoint, HeadFor(mesh, host::kTypeTag)}};
  host::PutIn(*mesh, *objects, nullptr);
  for (const auto& [type, parent] : wrong) EXPECT_TRUE(host::PutIn(*New(type), *parent, nullptr));
  host::PutIn(*New(), *mesh, nullptr);
  Write([&](HyperFile& file) { EXPECT_TRUE(atom::WriteObject(document.get(), &file)); });
  HyperFile file;
  ASSERT_TRUE(Open(file, HYPERFILE_READ));
  ASSERT_TRUE(atom::ReadObject(read.get(), &file, 1));
  EXPECT_EQ(read->down, nullptr);
  GeListNode* only = HeadFor(read.get(), host::kTypeObject)->down;
  ASSERT_TRUE(only && !only->next && only->type.id == host::kTypePolygonObject);
  EXPECT_TRUE(only->down && !only->down->next && only->down->type.id == kNull);
  const GeListHead* tags = HeadFor(static_cast<BaseList2D*>(only), host::kTypeTag);
  EXPECT_TRUE(tags->down->isFixed && tags->down->next == tags->downLast && tags->downLast->isFixed);
}

TEST_F(HyperFileTest, DeepTrees) {
  const Element root(New());
  GeListNode* deepest = root.get();
  for (int i = 0; i < 20000; ++i) {
    BaseList2D* below = New();
    host::Append(*below, *deepest);
    deepest = below;
  }
  Write([&](HyperFile& file) { EXPECT_TRUE(atom::WriteObject(root.get(), &file)); });
  HyperFile file;
  ASSERT_TRUE(Open(file, HYPERFILE_READ));
  const Element read(New());
  EXPECT_TRUE(atom::ReadObject(read.get(), &file, 1));
  int count = 0;
  for (const GeListNode* node = read->down; node; node = node->down) ++count;
  EXPECT_EQ(count, 20000);
}

TEST_F(HyperFileTest, Damage) {
  Tree tree;
  Write([&](HyperFile& file) { EXPECT_TRUE(atom::WriteObject(tree.root, &file)); });
  const std::string bytes = BytesOf(path_);
  HyperFile file;
  for (size_t size = 0; size < bytes.size(); ++size) {
    Put(bytes.substr(0, size));
    EXPECT_FALSE(Open(file, HYPERFILE_READ));
    EXPECT_EQ(file.error, HYPERFILE_ERROR_FORMAT) << size;
    // The same with a header that fits.
    if (size < 24) continue;
    std::string cut = bytes.substr(0, size);
    const uint64_t content = size - 24;
    std::memcpy(cut.data() + 16, &content, sizeof content);
    Put(cut);
    ASSERT_TRUE(Open(file, HYPERFILE_READ));
    const Element root(New());
    EXPECT_FALSE(atom::ReadObject(root.get(), &file, 1));
    EXPECT_EQ(Describe(*root), "5140Null0\n") << size;
    EXPECT_NE(file.error, HYPERFILE_ERROR_NONE);
    file.Close();
    ReadAnything();
  }
  for (size_t at = 24; at < bytes.size(); ++at) {
    for (const int bit : {0, 1, 3, 7}) {
      std::string flipped = bytes;
      flipped[at] = char(flipped[at] ^ 1 << bit);
      Put(flipped);
      ReadAnything();
    }
  }
}

// What a plug-in's type writes, and what its callbacks do.
std::function<bool(HyperFile*)> g_onWrite, g_onRead;
int32_t g_level;

void Register() {
  if (host::plugin::FindPlugin(kPluginType, 0)) return;
  Text name(Word("Stored"));
  NodeRecord record{};
  record.base = {sizeof record, PLUGIN_KIND_OBJECT, kPluginType, 0, &name, nullptr, nullptr, nullptr};
  record.baseType = 5155;
  record.level = 5;
  record.Write = [](void*, const GeListNode*, HyperFile* file) { return HostBool(g_onWrite(file)); };
  record.Read = [](void*, GeListNode*, HyperFile* file, int32_t level) {
    g_level = level;
    return HostBool(g_onRead(file));
  };
  EXPECT_NE(host::plugin::RegisterNode(&record), nullptr);
}

TEST_F(HyperFileTest, Plugins) {
  Register();
  const Element root(New());
  BaseList2D* inner = New(kPluginType);
  InsertUnderLast(inner, root.get());
  int32_t number = 0;
  const auto readsNumber = [&](HyperFile* file) { return file->ReadInt32(number); };
  const struct {
    const char* what;
    std::function<bool(HyperFile*)> write, read;
    bool isWritten, isRead;
  } cases[] = {
      {"plain", [](HyperFile* f) { return f->WriteInt32(9); }, readsNumber, true, true},
      {"unread", [](HyperFile* f) { return f->WriteInt32(9) && f->WriteInt32(1); }, readsNumber, true, true},
      {"chunk left entered", [](HyperFile* f) { return f->BeginChunk(1, 2) && f->EndChunk(); },
       [&](HyperFile* f) {
         int32_t id, level;
         number = 9;
         return f->EnterChunk(id, level);
       },
       true, true},
      {"not for others", [](HyperFile* f) { return f->WriteInt32(9) && !f->EndChunk() && !f->Close(); },
       [&](HyperFile* f) {
         return f->ReadInt32(number) && !f->LeaveChunk(true) && !f->Close() && !f->ReadInt32(number);
       },
       true, true},
      {"refuses to write", [](HyperFile*) { return false; }, readsNumber, false, false},
      {"leaves a chunk", [](HyperFile* f) { return f->BeginChunk(1, 2); }, readsNumber, false, false},
      {"refuses to read", [](HyperFile* f) { return f->WriteInt32(9); }, [](HyperFile*) { return false; }, true,
       false},
      {"writes another", [&](HyperFile* f) { return f->WriteInt32(9) && atom::Write(root.get(), f); },
       readsNumber, true, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    g_onWrite = c.write;
    g_onRead = c.read;
    Write([&](HyperFile& file) {
      EXPECT_TRUE(file.WriteInt32(3));
      EXPECT_EQ(atom::WriteObject(root.get(), &file), c.isWritten);
      EXPECT_TRUE(file.WriteInt32(4));
    });
    HyperFile file;
    const Element read(New());
    number = g_level = 0;
    ASSERT_TRUE(Open(file, HYPERFILE_READ) && file.ReadInt32(number));
    if (c.isWritten) {
      EXPECT_EQ(atom::ReadObject(read.get(), &file, 1), c.isRead);
    }
    if (c.isRead) {
      EXPECT_EQ(number, 9);
      EXPECT_EQ(g_level, 5);
      EXPECT_TRUE(read->down && read->down->isPlugin);
    }
    if (c.isRead || !c.isWritten) {  // nothing stays of a failure
      EXPECT_TRUE(file.ReadInt32(number) && number == 4);
    }
  }

  // Without its type an element is left out.
  g_onWrite = [](HyperFile*) { return true; };
  Write([&](HyperFile& file) { EXPECT_TRUE(atom::WriteObject(root.get(), &file)); });
  std::string bytes = BytesOf(path_);
  const std::string type(reinterpret_cast<const char*>(&kPluginType), 4);
  bytes.replace(bytes.find(type), 4, "\1\2\3\4");
  Put(bytes);
  HyperFile file;
  const Element read(New());
  ASSERT_TRUE(Open(file, HYPERFILE_READ) && atom::ReadObject(read.get(), &file, 1)) << file.error;
  EXPECT_EQ(read->down, nullptr);
}

}  // namespace
