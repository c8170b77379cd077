#include "framework/base/TextFile.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace base {

tl::expected<std::string, std::string> readTextFile(const std::string& path) {
  const auto failed = [&path](const std::string& cause) {
    return tl::unexpected(path + ": cannot be read: " + cause);
  };
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"),
                                                             &std::fclose);
  if (!file) {
    return failed(std::generic_category().message(errno));
  }
  std::string text(kMaxTextFileBytes + 1, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file.get()));
  if (std::ferror(file.get()) != 0) {
    return failed(std::generic_category().message(errno));
  }
  if (text.size() > kMaxTextFileBytes) {
    return failed("larger than " + std::to_string(kMaxTextFileBytes) + " bytes");
  }
  return text;
}

}  // namespace base
