// SPDX-License-Identifier: MIT
// Module versions on POSIX: from the name of the shared object's file. ELF has no manifests.
#include "platform/Modules.h"
#include "platform/Environment.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <dlfcn.h>
#include <link.h>

namespace kx::platform {

int32_t DllVersion(const AnsiString& Name, uint32_t& Major, uint32_t& Minor, uint32_t& Build) {
  Major = Minor = Build = 0;
  void* Handle = dlopen(Name.c_str(), RTLD_LAZY | RTLD_LOCAL);
  if (!Handle) {
    errno = ENOENT;
    return -1;
  }
  AnsiString Path;
  link_map* Map = nullptr;
  if (dlinfo(Handle, RTLD_DI_LINKMAP, &Map) == 0 && Map && Map->l_name) {
    // The SONAME link points at the file that carries the full version.
    char Real[PATH_MAX];
    Path = realpath(Map->l_name, Real) ? Real : Map->l_name;
  }
  dlclose(Handle);
  const size_t Slash = Path.rfind('/');
  const AnsiString File = Slash == AnsiString::npos ? Path : Path.substr(Slash + 1);
  const size_t So = File.rfind(".so.");
  if (So == AnsiString::npos) return 0;
  uint32_t* Parts[3] = {&Major, &Minor, &Build};
  size_t I = So + 4;
  int Count = 0;
  for (; Count < 3 && I < File.size(); ++Count) {
    if (File[I] < '0' || File[I] > '9') break;
    uint64_t V = 0;
    while (I < File.size() && File[I] >= '0' && File[I] <= '9' && V <= UINT32_MAX)
      V = V * 10 + uint64_t(File[I++] - '0');
    if (V > UINT32_MAX) break;
    *Parts[Count] = uint32_t(V);
    if (I < File.size() && File[I] == '.') ++I;
  }
  if (Count == 0) return 0;
  return 1;
}

int32_t ModuleManifest(const AnsiString&, std::vector<uint8_t>& Data) {
  Data.clear();
  errno = int(ERROR_NOT_SUPPORTED_);
  return -1;
}

} // namespace kx::platform
