#include "dme/store/PrivateDirectory.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

namespace dme {

namespace {

namespace fs = std::filesystem;

/// Another process that makes one in the same moment may take this one for a left-over.
constexpr int kAttempts = 16;

/// Takes the directory for this process: its descriptor, or -1 when another has it, when it is
/// gone or when it is not ours to take.
int take(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (descriptor < 0) {
    return -1;
  }
  struct stat status {};
  const bool isOurs = ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 &&
                      ::fstat(descriptor, &status) == 0 && status.st_uid == ::geteuid() &&
                      status.st_nlink != 0;  // else it was removed before it was locked
  if (!isOurs) {
    ::close(descriptor);
    return -1;
  }
  return descriptor;
}

void removeLeftOvers(const fs::path& parent) {
  std::error_code error;
  for (fs::directory_iterator next(parent, error); !error && next != fs::directory_iterator();
       next.increment(error)) {
    if (!next->path().filename().string().starts_with(PrivateDirectory::kPrefix)) {
      continue;
    }
    if (const int descriptor = take(next->path().string()); descriptor >= 0) {
      std::error_code ignored;
      fs::remove_all(next->path(), ignored);
      ::close(descriptor);
    }
  }
}

}  // namespace

Result<PrivateDirectory> PrivateDirectory::make() {
  std::error_code error;
  const fs::path parent = fs::temp_directory_path(error);
  removeLeftOvers(parent);
  for (int attempt = 0; !error && attempt < kAttempts; ++attempt) {
    std::string path = parent.string() + "/" + kPrefix + "XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) {
      error = {errno, std::generic_category()};
    } else if (const int descriptor = take(path); descriptor >= 0) {
      return PrivateDirectory(std::move(path), descriptor);
    } else {
      ::rmdir(path.c_str());
    }
  }
  const std::string cause = error ? error.message() : "it cannot be locked";
  return failure(parent.string() + "/" + kPrefix + "XXXXXX cannot be made (" + cause +
                 "): set TMPDIR to a directory that this user can write to");
}

PrivateDirectory::PrivateDirectory(std::string path, int descriptor)
    : path_(std::move(path)), descriptor_(descriptor) {}

PrivateDirectory::PrivateDirectory(PrivateDirectory&& other) noexcept
    : path_(std::exchange(other.path_, "")), descriptor_(std::exchange(other.descriptor_, -1)) {}

PrivateDirectory::~PrivateDirectory() {
  if (!path_.empty()) {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
    ::close(descriptor_);
  }
}

}  // namespace dme
