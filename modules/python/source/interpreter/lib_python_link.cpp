// Binds the module's weak references to the interpreter's library.

#include "interpreter/lib_python_link.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <vector>

#include "python_interpreter.h"

namespace qlx {
namespace {

std::string g_file;
void* g_handle = nullptr;
bool g_bound = false;

#if defined(__x86_64__)
constexpr uint32_t kDirectTypes[] = {R_X86_64_64, R_X86_64_GLOB_DAT, R_X86_64_JUMP_SLOT};
#elif defined(__aarch64__)
constexpr uint32_t kDirectTypes[] = {R_AARCH64_ABS64, R_AARCH64_GLOB_DAT, R_AARCH64_JUMP_SLOT};
#else
#error "the relocation types of this processor are not known here"
#endif

// The parts of the module's image that its relocations refer to.
struct Image {
  uintptr_t base = 0;
  const ElfW(Sym) * symbols = nullptr;
  const char* names = nullptr;
  std::vector<std::pair<const ElfW(Rela)*, size_t>> relocations;
  uintptr_t relroStart = 0;
  size_t relroBytes = 0;
};

int FindOwnImage(dl_phdr_info* info, size_t, void* data) {
  auto& image = *static_cast<Image*>(data);
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)& header = info->dlpi_phdr[i];
    if (header.p_type == PT_DYNAMIC && info->dlpi_addr + header.p_vaddr == uintptr_t(_DYNAMIC))
      image.base = info->dlpi_addr;
  }
  const bool own = image.base == info->dlpi_addr && image.base;
  for (int i = 0; own && i < info->dlpi_phnum; ++i) {
    const ElfW(Phdr)& header = info->dlpi_phdr[i];
    if (header.p_type != PT_GNU_RELRO) continue;
    const uintptr_t page = uintptr_t(sysconf(_SC_PAGESIZE));
    image.relroStart = (image.base + header.p_vaddr) & ~(page - 1);
    image.relroBytes = ((image.base + header.p_vaddr + header.p_memsz) & ~(page - 1)) - image.relroStart;
  }
  return own;
}

// _DYNAMIC, which the linker defines, is the dynamic section of this very image.
Image ReadOwnImage() {
  Image image;
  dl_iterate_phdr(FindOwnImage, &image);
  const ElfW(Rela) * tables[2] = {};
  size_t bytes[2] = {};
  // The loader has turned these addresses into absolute ones.
  for (const ElfW(Dyn)* entry = _DYNAMIC; entry->d_tag != DT_NULL; ++entry) {
    const auto address = entry->d_un.d_ptr;
    switch (entry->d_tag) {
      case DT_SYMTAB:
        image.symbols = reinterpret_cast<const ElfW(Sym)*>(address);
        break;
      case DT_STRTAB:
        image.names = reinterpret_cast<const char*>(address);
        break;
      case DT_RELA:
        tables[0] = reinterpret_cast<const ElfW(Rela)*>(address);
        break;
      case DT_RELASZ:
        bytes[0] = entry->d_un.d_val;
        break;
      case DT_JMPREL:
        tables[1] = reinterpret_cast<const ElfW(Rela)*>(address);
        break;
      case DT_PLTRELSZ:
        bytes[1] = entry->d_un.d_val;
        break;
      default:
        break;
    }
  }
  for (int i = 0; i < 2; ++i)
    if (tables[i]) image.relocations.emplace_back(tables[i], bytes[i] / sizeof(ElfW(Rela)));
  return image;
}

bool IsDirect(uint32_t type) {
  for (uint32_t known : kDirectTypes)
    if (type == known) return true;
  return false;
}

// Calls `use(name, place, addend)` for each reference to a symbol of the interpreter.
template <class Use>
void ForEachReference(const Image& image, Use use) {
  for (const auto& [table, count] : image.relocations)
    for (size_t i = 0; i < count; ++i) {
      const ElfW(Rela)& relocation = table[i];
      const ElfW(Sym)& symbol = image.symbols[ELF64_R_SYM(relocation.r_info)];
      const char* name = image.names + symbol.st_name;
      if (symbol.st_shndx != SHN_UNDEF || !IsDirect(uint32_t(ELF64_R_TYPE(relocation.r_info)))) continue;
      if (!std::strncmp(name, "Py", 2) || !std::strncmp(name, "_Py", 3))
        use(name, reinterpret_cast<void**>(image.base + relocation.r_offset), relocation.r_addend);
    }
}

// Fills the references in. A symbol that the library lacks is an error: nothing is changed.
tavor::Error BindReferences(void* library) {
  const Image image = ReadOwnImage();
  std::string missing;
  ForEachReference(image, [&](const char* name, void**, ElfW(Sxword)) {
    if (!dlsym(library, name) && missing.size() < 200)
      missing += std::string(missing.empty() ? "" : ", ") + name;
  });
  if (!missing.empty())
    return tavor::Error("'" + g_file + "' is not the library of Python " QLX_PYTHON_VERSION ": it lacks " +
                        missing);
  auto* relro = reinterpret_cast<void*>(image.relroStart);
  if (image.relroBytes && mprotect(relro, image.relroBytes, PROT_READ | PROT_WRITE) != 0)
    return tavor::Error(std::string("the module can't be bound to '") + g_file + "': " + std::strerror(errno));
  ForEachReference(image, [&](const char* name, void** place, ElfW(Sxword) addend) {
    *place = static_cast<char*>(dlsym(library, name)) + addend;
  });
  if (image.relroBytes) mprotect(relro, image.relroBytes, PROT_READ);
  return {};
}

std::vector<std::string> Candidates() {
  const char* chosen = std::getenv("QLX_PYTHON_LIBRARY");
  if (chosen && *chosen) return {chosen};
  return {QLX_PYTHON_LIBRARY, QLX_PYTHON_SONAME};
}

// A library that the process has brought with it is the one to use: two do not go together.
void* OpenLibraryOfProcess() {
  void* known = dlsym(RTLD_DEFAULT, "Py_IsInitialized");
  Dl_info info;
  if (!known || !dladdr(known, &info)) return nullptr;
  void* handle = dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD);
  // A program that has the interpreter built in is no library to open by name.
  return handle ? handle : dlopen(nullptr, RTLD_NOW);
}

void* OpenLibrary(std::string& reasons) {
  if (void* handle = OpenLibraryOfProcess()) return handle;
  for (const std::string& candidate : Candidates()) {
    if (void* handle = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL)) return handle;
    reasons += std::string(reasons.empty() ? "" : "; ") + dlerror();
  }
  return nullptr;
}

// Records and calls of another version have another shape: the words are asked first.
tavor::Error CheckVersion(void* library) {
  auto* words = reinterpret_cast<const char* (*)()>(dlsym(library, "Py_GetVersion"));
  if (!words) return tavor::Error("'" + g_file + "' is not the library of Python " QLX_PYTHON_VERSION);
  const std::string version = words();
  if (version.rfind(QLX_PYTHON_VERSION ".", 0) == 0) return {};
  return tavor::Error("wanted the library of Python " QLX_PYTHON_VERSION ", '" + g_file + "' is that of " +
                      version.substr(0, version.find(' ')));
}

tavor::Error Bind() {
  std::string reasons;
  void* handle = OpenLibrary(reasons);
  if (!handle) return tavor::Error("the library of Python " QLX_PYTHON_VERSION " can't be loaded: " + reasons);
  Dl_info info;
  void* known = dlsym(handle, "Py_IsInitialized");
  g_file = known && dladdr(known, &info) ? info.dli_fname : Candidates().front();
  if (tavor::Error error = CheckVersion(handle)) return error;
  if (tavor::Error error = BindReferences(handle)) return error;
  // Extension modules resolve against what is global.
  dlopen(g_file.c_str(), RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL);
  g_handle = handle;
  g_bound = true;
  return {};
}

}  // namespace

tavor::Error BindInterpreterLibrary() {
  static const tavor::Error first = Bind();
  return first;
}

bool IsInterpreterLibraryBound() { return g_bound; }
const std::string& InterpreterLibraryFile() { return g_file; }
void* InterpreterLibraryHandle() { return g_handle; }

}  // namespace qlx
