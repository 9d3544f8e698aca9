#include "fake_application.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

struct BaseFile {
  std::string bytes;
  size_t at = 0;
};

struct DataDictionary {
  std::map<std::string, int64_t> integers;
  std::map<std::string, std::string> texts;
};

namespace {

namespace fs = std::filesystem;

FakeApplication* active = nullptr;

HostResult Failure(const std::string& text) {
  return {HOST_RESULT_ERROR, 0, nullptr, fake::string::FromUtf8(text.data(), int64_t(text.size()))};
}

std::string View(const HostFilename* path) { return Take(fake::filename::GetString(path)); }

HostFilename MakePath(const std::string& path) {
  const Text text(path);
  return fake::filename::FromString(text);
}

HostString MakeText(const std::string& text) {
  return fake::string::FromUtf8(text.data(), int64_t(text.size()));
}

const TavorHead* ResolveService(const char* identity) {
  if (!active || active->lackingServices.contains(identity)) return nullptr;
  for (const TavorHead* head : {&fake::application::table.head, &fake::datadictionary::table.head,
                                &fake::logger::table.head, &fake::registry::table.head})
    if (!std::strcmp(identity, head->identity)) return head;
  return nullptr;
}

}  // namespace

FakeApplication::FakeApplication()
    : general(fake::general::table),
      strings(fake::string::table),
      filenames(fake::filename::table),
      baseFiles(fake::basefile::table),
      resources(fake::resource::table),
      plugins(fake::plugin::table) {
  std::string pattern = fs::temp_directory_path() / "entry-XXXXXX";
  root = mkdtemp(pattern.data());
  const auto folder = [&](const char* name) {
    fs::create_directories(root / name);
    return (root / name).string();
  };
  startup = folder("startup");
  library = folder("library");
  user = folder("user");
  home = folder("home");
  modulePath = folder("startup/modules") + "/qlx.so";
  active = this;
  InstallValues();
  InstallFiles();
  InstallGeneral();
  InstallServices();
  ResetTables();
}

FakeApplication::~FakeApplication() {
  active = nullptr;
  std::error_code ignored;
  fs::remove_all(root, ignored);
}

void FakeApplication::ResetTables(int32_t version) {
  general = fake::general::table;
  strings = fake::string::table;
  strings.symbolCache = this;
  filenames = fake::filename::table;
  baseFiles = fake::basefile::table;
  resources = fake::resource::table;
  plugins = fake::plugin::table;
  tables = {version, HOST_GROUP_COUNT, {}};
  const auto place = [&](int32_t number, auto& group) {
    tables.group[number] = reinterpret_cast<HostGroup*>(&group);
  };
  place(HOST_GROUP_GENERAL, general);
  place(HOST_GROUP_STRING, strings);
  place(HOST_GROUP_FILENAME, filenames);
  place(HOST_GROUP_BASE_FILE, baseFiles);
  place(HOST_GROUP_RESOURCE, resources);
  place(HOST_GROUP_PLUGIN, plugins);
}

void FakeApplication::FillPlatformRecord(TavorRecord* record) const {
  *record = {sizeof(TavorRecord), 1, &ResolveService, 0, 0};
}

void FakeApplication::Record(const std::string& event) {
  const std::lock_guard lock(mutex_);
  events.push_back(event);
}

bool FakeApplication::Happened(const std::string& event) const {
  const std::lock_guard lock(mutex_);
  return std::find(events.begin(), events.end(), event) != events.end();
}

std::string FakeApplication::Output() const {
  const std::lock_guard lock(mutex_);
  std::string output;
  for (const LogLine& line : log) output += line.text;
  return output + console + diagnostics;
}

void FakeApplication::InstallFiles() {
  fake::general::GeGetStartupPath = [this] { return MakePath(startup); };
  fake::general::GeGetQLXPath = [this](int32_t kind) {
    return kind == HOST_PATH_LIBRARY        ? MakePath(library)
           : kind == HOST_PATH_USER_LIBRARY ? MakePath(user)
           : kind == HOST_PATH_HOME         ? MakePath(home)
                                            : HostFilename{};
  };
  fake::general::HostFileExists = [](const HostFilename* path, int32_t isFolder) {
    return int32_t(isFolder ? fs::is_directory(View(path)) : fs::is_regular_file(View(path)));
  };
  fake::general::CreateFolder = [](const HostFilename* path) {
    std::error_code error;
    fs::create_directories(View(path), error);
    return error ? Failure(error.message()) : HostResult{};
  };
  fake::basefile::OpenForReading = [this](const HostFilename* path, BaseFile** result) {
    std::ifstream stream(View(path), std::ios::binary);
    if (!stream || fs::is_directory(View(path))) return Failure("can't open " + View(path));
    *result = new BaseFile{{std::istreambuf_iterator<char>(stream), {}}};
    ledger.Add("BaseFile", *result);
    return HostResult{};
  };
  fake::basefile::GetLength = [](BaseFile* self) { return int64_t(self->bytes.size()); };
  fake::basefile::ReadBytes = [](BaseFile* self, void* buffer, int64_t bytes) {
    const size_t size = self->bytes.copy(static_cast<char*>(buffer), size_t(bytes), self->at);
    self->at += size;
    return int64_t(size);
  };
  fake::basefile::Close = [this](BaseFile* self) {
    if (self && ledger.Remove("BaseFile", self)) delete self;
  };
  fake::resource::Open = [this](const HostFilename* folder) {
    Record("resource open " + View(folder));
    auto* resource = reinterpret_cast<GeResource*>(new char);
    ledger.Add("Resource", resource);
    return resource;
  };
  fake::resource::Close = [this](GeResource* self) {
    if (!self) return;
    Record("resource close");
    if (ledger.Remove("Resource", self)) delete reinterpret_cast<char*>(self);
  };
  fake::resource::SetSymbolHook = [this](ResourceSymbolHook hook) { symbolHook = hook; };
}

void FakeApplication::InstallGeneral() {
  namespace general = fake::general;
  general::Alloc = [this](int64_t bytes) -> void* {
    if (!ledger.Allowed()) return nullptr;
    void* memory = malloc(size_t(bytes));
    ledger.Add("Alloc", memory);
    return memory;
  };
  general::Free = [this](void* memory) {
    if (memory && ledger.Remove("Alloc", memory)) free(memory);
  };
  general::RegisterModuleInitialization = [this](const ModuleInitialization* offered) {
    pair = *offered;
    Record("initialization");
    return 1;
  };
  general::GeIsMainThread = [main = std::this_thread::get_id()] {
    return int32_t(std::this_thread::get_id() == main);
  };
  general::GetDefaultLanguage = [] { return MakeText("en-US"); };
  general::GeGetTimer = [] {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return int32_t(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
  };
  general::GePluginMessage = [this](int32_t id, void*) {
    Record("message " + std::to_string(id));
    return 0;
  };
  general::SpecialEventAdd = [this](int32_t id, uint64_t, uint64_t) { Record("event " + std::to_string(id)); };
  general::StopAllThreads = [this](int32_t views, int32_t renderings, int32_t others) {
    Record("stop " + std::to_string(views) + " " + std::to_string(renderings) + " " + std::to_string(others));
  };
  const auto write = [this](std::string FakeApplication::*where) {
    return [this, where](const HostString* text) {
      const std::lock_guard lock(mutex_);
      this->*where += ::View(text) + "\n";
    };
  };
  general::GePrint = write(&FakeApplication::console);
  general::DiagnosticOutput = write(&FakeApplication::diagnostics);
  general::ConsoleWrite = [this](int32_t, const HostString* text) {
    const std::lock_guard lock(mutex_);
    console += ::View(text);
    return int64_t(::View(text).size());
  };
  general::FindLibrary = [this](int32_t id, int32_t minimumVersion) -> const void* {
    Record("find " + std::to_string(id) + " " + std::to_string(minimumVersion));
    const auto found = libraries.find(id);
    return found != libraries.end() && found->second.first >= minimumVersion ? found->second.second : nullptr;
  };
  general::InstallLibrary = [this](int32_t id, int32_t version, const void* table) {
    Record((table ? "library " : "no library ") + std::to_string(id) + " " + std::to_string(version));
    libraries[id] = {version, table};
    return 1;
  };
  fake::plugin::RegisterPlugin = [this](const PluginRecord* record) {
    Record("plugin " + std::to_string(record->id));
    return reinterpret_cast<BasePlugin*>(this);
  };
  fake::plugin::RegisterCommand = [](const CommandRecord* record) {
    return fake::plugin::RegisterPlugin(&record->base);
  };
}

void FakeApplication::InstallServices() {
  namespace application = fake::application;
  application::GetIdentity = [this] { return MakeText(identity); };
  application::GetArgumentCount = [this] { return int32_t(arguments.size()); };
  application::GetArgument = [this](int32_t index) { return MakeText(arguments.at(size_t(index))); };
  application::GetExecutable = [this] { return MakePath(startup + "/application"); };
  application::RegisterModuleInfo = [this](const char* id, const HostString* shortName,
                                           const HostString* longName, const HostString* version) {
    const std::lock_guard lock(mutex_);
    moduleInfos[id] = {::View(shortName), ::View(longName), ::View(version)};
    return HostResult{};
  };

  namespace dictionary = fake::datadictionary;
  dictionary::Create = [this]() -> DataDictionary* {
    if (!ledger.Allowed()) return nullptr;
    auto* created = new DataDictionary;
    ledger.Add("DataDictionary", created);
    return created;
  };
  dictionary::Free = [this](DataDictionary* self) {
    if (self && ledger.Remove("DataDictionary", self)) delete self;
  };
  dictionary::SetInt = [](DataDictionary* self, const char* key, int64_t value) {
    self->integers[key] = value;
    return 1;
  };
  dictionary::GetInt = [](const DataDictionary* self, const char* key, int64_t fallback) {
    const auto found = self->integers.find(key);
    return found == self->integers.end() ? fallback : found->second;
  };
  dictionary::SetString = [](DataDictionary* self, const char* key, const HostString* value) {
    self->texts[key] = ::View(value);
    return 1;
  };
  dictionary::GetString = [](const DataDictionary* self, const char* key) {
    const auto found = self->texts.find(key);
    return found == self->texts.end() ? HostString{} : MakeText(found->second);
  };

  namespace logger = fake::logger;
  logger::Create = [this](const char* id, const HostString*) {
    const std::lock_guard lock(mutex_);
    loggers[id].id = id;
    return &loggers[id];
  };
  logger::GetDefault = [this] { return &defaultLogger; };
  logger::AddOutput = [](Logger* self, int32_t output, int32_t level) {
    self->outputs.emplace_back(output, level);
    return HostResult{};
  };
  logger::Write = [this](Logger* self, int32_t, int32_t level, const HostString* text, const char* file,
                         int32_t line) {
    const std::lock_guard lock(mutex_);
    log.push_back({self, level, ::View(text), file ? file : "-", line});
    return 0;
  };
  logger::Remove = [this](Logger* self) {
    EXPECT_NE(self, &defaultLogger);
    loggers.erase(std::string(self->id));
  };

  fake::registry::Insert = [this](const char* name, const char* id, void* object) {
    const std::lock_guard lock(mutex_);
    return registry[name].emplace(id, object).second ? HostResult{} : HostResult{HOST_RESULT_ERROR};
  };
  fake::registry::Find = [this](const char* name, const char* id) -> void* {
    const std::lock_guard lock(mutex_);
    const auto& list = registry[name];
    const auto found = list.find(id);
    return found == list.end() ? nullptr : found->second;
  };
  fake::registry::Erase = [this](const char* name, const char* id) {
    const std::lock_guard lock(mutex_);
    return int32_t(registry[name].erase(id));
  };
}
