// What the process was started with, and what is set in it for all.
#ifndef HOST_APP_SETTINGS_H
#define HOST_APP_SETTINGS_H

#include <atomic>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace host {

// Named switches of the process. Safe from any thread.
class Configuration {
 public:
  int32_t Get(const char* name, int32_t fallback) const;
  void Set(const char* name, int32_t value);

  // Changes a variable that is there; false when it is not.
  bool Change(const std::string& name, int32_t value);
  std::string Names() const;

 private:
  mutable std::mutex lock_;
  std::map<std::string, int32_t, std::less<>> values_{
      {"g_console", 1}, {"g_disableConsoleOutput", 0}, {"g_encryptPypFile", 0}, {"g_trackLeaks", 0}};
};

// Set before the module is loaded and only read afterwards, apart from the last two.
struct Settings {
  std::string identity = "net.tavor.application.python";
  std::vector<std::string> arguments;
  std::filesystem::path executable;
  std::filesystem::path startup;               // what the application ships
  std::filesystem::path home;                  // empty when the user has none
  std::vector<std::filesystem::path> plugins;  // further folders of the plug-in search path
  std::string scene;                           // to open ahead of the script; empty: none
  std::thread::id mainThread = std::this_thread::get_id();
  std::atomic<int> exitCode{0};
  Configuration configuration;
};

Settings& GetSettings();

// Reads the arguments, the environment and the place of the executable. Throws
// std::invalid_argument for a wrong option.
void InitSettings(int argc, char** argv);

// The user's folder by the environment; empty when the environment names none.
std::filesystem::path FindHome();

// The language by the environment, such as "en-US".
std::string FindLanguage();

// "de_DE.UTF-8" as "de-DE"; what names no language as "en-US".
std::string LanguageOfLocale(std::string_view locale);

}  // namespace host

#endif
