#include "dme/ModelReader.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <utility>

#include "dme/Database.h"
#include "dme/ObjectStore.h"
#include "dme/StateLock.h"

namespace dme {

namespace {

/// A directory that only this user can enter, removed with everything in it.
class PrivateDirectory {
 public:
  static Result<PrivateDirectory> make() {
    std::error_code error;
    std::string path = std::filesystem::temp_directory_path(error).string() + "/model-XXXXXX";
    if (error || ::mkdtemp(path.data()) == nullptr) {
      return failure(path + " cannot be made (" + (error ? error.message() : lastSystemError()) +
                     "): set TMPDIR to a directory that this user can write to");
    }
    return PrivateDirectory(std::move(path));
  }
  ~PrivateDirectory() {
    if (!path_.empty()) {
      std::error_code ignored;
      std::filesystem::remove_all(path_, ignored);
    }
  }
  PrivateDirectory(PrivateDirectory&& other) noexcept : path_(std::exchange(other.path_, "")) {}
  PrivateDirectory& operator=(PrivateDirectory&&) = delete;

  const std::string& path() const { return path_; }

 private:
  explicit PrivateDirectory(std::string path) : path_(std::move(path)) {}

  std::string path_;
};

bool exists(const std::string& file) {
  return ::access(file.c_str(), F_OK) == 0;
}

Result<void> copyFile(const std::string& from, const std::string& to) {
  std::error_code error;
  std::filesystem::copy_file(from, to, error);
  if (!error) {
    std::filesystem::permissions(to, std::filesystem::perms(0600), error);
  }
  if (error) {
    return failure(from + " cannot be copied to " + to + " (" + error.message() +
                   "): run as the user that owns it, with room in TMPDIR for a copy");
  }
  return {};
}

// True when the copy is one of a directory at rest; false when a process uses it.
Result<bool> copyDatabase(const std::string& stateDir, const std::string& copyDir) {
  // Without a lock file no process has used the directory yet, and none can be kept away.
  const bool isLockable = exists(stateDir + "/" + StateLock::kFileName);
  std::optional<StateLock> lock;
  if (isLockable) {
    auto acquired = StateLock::acquireForReading(stateDir);
    if (!acquired || !*acquired) {
      return acquired.map([](const auto&) { return false; });
    }
    lock = std::move(*acquired);
  }
  const std::string name = std::string("/") + Database::kFileName;
  bool isAnythingThere = false;
  for (const std::string& file : {name, name + "-wal"}) {
    if (!exists(stateDir + file)) {
      continue;
    }
    isAnythingThere = true;
    if (const Result<void> copied = copyFile(stateDir + file, copyDir + file); !copied) {
      return tl::unexpected<Error>(copied.error());
    }
  }
  if (!isAnythingThere) {
    return failure(stateDir + name + " is not there (" + lastSystemError() +
                   "): name the state directory of a supervisor that has run");
  }
  return isLockable || !exists(stateDir + "/" + StateLock::kFileName);
}

// The operator knows the file, not its copy.
Error aboutOriginal(Error error, const std::string& copyDir, const std::string& stateDir) {
  for (std::size_t at = error.text.find(copyDir); at != std::string::npos;
       at = error.text.find(copyDir, at + stateDir.size())) {
    error.text.replace(at, copyDir.size(), stateDir);
  }
  return error;
}

}  // namespace

Result<std::optional<std::vector<ObjectView>>> readStoppedModel(const std::string& stateDir,
                                                                const mo::Dn& dn) {
  const Result<PrivateDirectory> directory = PrivateDirectory::make();
  if (!directory) {
    return tl::unexpected<Error>(directory.error());
  }
  const Result<bool> copied = copyDatabase(stateDir, directory->path());
  if (!copied) {
    return tl::unexpected<Error>(copied.error());
  }
  if (!*copied) {
    return std::nullopt;
  }
  const auto store = ObjectStore::open(directory->path());
  if (!store) {
    return tl::unexpected<Error>(aboutOriginal(store.error(), directory->path(), stateDir));
  }
  return (*store)->view(dn);
}

}  // namespace dme
