#include "app/settings.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "app/command_line.h"
#include "tables/tables.h"

namespace host {
namespace fs = std::filesystem;
namespace {

constexpr const char* kEnglish = "en-US";

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

bool IsAlphanumeric(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
  });
}

}  // namespace

int32_t Configuration::Get(const char* name, int32_t fallback) const {
  std::lock_guard guard(lock_);
  const auto found = values_.find(std::string_view(name));
  return found == values_.end() ? fallback : found->second;
}

void Configuration::Set(const char* name, int32_t value) {
  std::lock_guard guard(lock_);
  values_[name] = value;
}

bool Configuration::Change(const std::string& name, int32_t value) {
  std::lock_guard guard(lock_);
  const auto found = values_.find(name);
  if (found == values_.end()) return false;
  found->second = value;
  return true;
}

std::string Configuration::Names() const {
  std::lock_guard guard(lock_);
  std::string names;
  for (const auto& [name, value] : values_) names += (names.empty() ? "" : ", ") + name;
  return names;
}

Settings& GetSettings() { return Lasting<Settings>(); }

void InitSettings(int argc, char** argv) {
  Settings& settings = GetSettings();
  const HostOptions options = TakeHostOptions({argv, argv + argc});
  settings.arguments = options.arguments;
  for (const std::string& folder : options.plugins) settings.plugins.push_back(fs::absolute(folder));
  settings.scene = options.open;
  for (const auto& [name, value] : options.set)
    if (!settings.configuration.Change(name, value))
      throw std::invalid_argument("--set " + name + ": there is no such configuration variable; known are " +
                                  settings.configuration.Names());
  settings.executable = fs::read_symlink("/proc/self/exe");
  settings.startup = settings.executable.parent_path().parent_path() / "lib";
  settings.home = options.home.empty() ? FindHome() : fs::absolute(options.home);
  settings.mainThread = std::this_thread::get_id();
}

fs::path FindHome() {
  if (const auto home = Environment("QLX_HOME"); !home.empty()) return fs::absolute(home);
  // A relative folder for the user's data is to be ignored.
  if (const auto data = Environment("XDG_DATA_HOME"); data.starts_with('/')) return fs::path(data) / "qlx";
  if (const auto user = Environment("HOME"); !user.empty()) return fs::absolute(user) / ".local/share/qlx";
  return {};
}

std::string FindLanguage() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"})
    if (const auto locale = Environment(name); !locale.empty()) return LanguageOfLocale(locale);
  return kEnglish;
}

// The language becomes a part of file names, so only letters and digits pass.
std::string LanguageOfLocale(std::string_view locale) {
  locale = locale.substr(0, locale.find_first_of(".@"));
  const size_t separator = locale.find_first_of("_-");
  const std::string_view language = locale.substr(0, separator);
  if (language.size() < 2 || language.size() > 3 || !IsAlphanumeric(language)) return kEnglish;
  if (separator == locale.npos) return std::string(language);
  const std::string_view country = locale.substr(separator + 1);
  if (country.empty() || !IsAlphanumeric(country)) return kEnglish;
  return std::string(language).append("-").append(country);
}

}  // namespace host
