// SPDX-License-Identifier: MIT
// A fresh folder for one test, removed with everything in it when the test is done.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace kxtest {

class TTempFolder {
public:
  TTempFolder() {
    std::random_device Rd;
    std::error_code Ec;
    for (int Try = 0; Try < 100; ++Try) {
      FPath = std::filesystem::temp_directory_path() / ("kx-test-" + std::to_string(Rd()));
      if (std::filesystem::create_directory(FPath, Ec)) return;
    }
    throw std::runtime_error("no temporary folder");
  }
  ~TTempFolder() {
    std::error_code Ec;
    // Read-only entries would stop the removal on Windows.
    for (auto It = std::filesystem::recursive_directory_iterator(FPath, Ec);
         It != std::filesystem::recursive_directory_iterator(); It.increment(Ec))
      std::filesystem::permissions(
          It->path(), std::filesystem::perms::owner_write,
          std::filesystem::perm_options::add | std::filesystem::perm_options::nofollow, Ec);
    std::filesystem::remove_all(FPath, Ec);
  }
  TTempFolder(const TTempFolder&) = delete;
  TTempFolder& operator=(const TTempFolder&) = delete;

  const std::filesystem::path& Path() const { return FPath; }
  // The folder, or a name in it ('/' between its parts), as the library's 8-bit native path.
  std::string Name(std::string_view Relative = {}) const {
    if (Relative.empty()) return FPath.string();
    return (FPath / std::filesystem::path(std::string(Relative)).make_preferred()).string();
  }
  // Writes Bytes to the file Relative (its folder must exist) and returns its name.
  std::string WriteFile(std::string_view Relative, std::string_view Bytes) const {
    const std::string N = Name(Relative);
    std::ofstream F(N, std::ios::binary | std::ios::trunc);
    F.write(Bytes.data(), std::streamsize(Bytes.size()));
    return N;
  }

  static std::string ReadFile(const std::string& Name) {
    std::ifstream F(Name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(F), std::istreambuf_iterator<char>());
  }

private:
  std::filesystem::path FPath;
};

} // namespace kxtest
