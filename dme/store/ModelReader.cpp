#include "dme/store/ModelReader.h"

#include <unistd.h>

#include <filesystem>
#include <utility>

#include "dme/store/Database.h"
#include "dme/store/ObjectStore.h"
#include "dme/store/PrivateDirectory.h"
#include "dme/store/StateLock.h"

namespace dme {

namespace {

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
