#include "supervisor/ServiceLibrary.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace supervisor {
namespace {

std::vector<std::string> candidates(const std::string& name) {
  if (name.find('/') != std::string::npos) {
    return {name};
  }
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto folder = program.parent_path();
  std::vector<std::string> paths;
  for (const char* place : {".", "../lib/serviceOrchAG", "../lib"}) {
    const auto path = (folder / place / name).lexically_normal();
    if (!error && std::filesystem::exists(path)) {
      paths.push_back(path.string());
    }
  }
  paths.push_back(name);
  return paths;
}

const proc::ServicePlugin* entryOf(void* library) {
  const auto entry = reinterpret_cast<proc::ServicePlugin::EntryPoint>(
      dlsym(library, proc::ServicePlugin::kEntryPoint));
  return entry == nullptr ? nullptr : entry();
}

}  // namespace

ServiceLibrary::ServiceLibrary(const std::string& name) : path_(candidates(name).front()) {
  void* library = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
  if (library == nullptr) {
    const char* cause = dlerror();  // NOLINT(concurrency-mt-unsafe): one per thread in glibc
    throw std::runtime_error("service library " + path_ +
                             " cannot be loaded: " + (cause == nullptr ? "unknown cause" : cause) +
                             "; set service.library to its path");
  }
  plugin_ = entryOf(library);
  if (plugin_ == nullptr) {
    throw std::runtime_error("service library " + path_ + " has no entry " +
                             proc::ServicePlugin::kEntryPoint + "; it is no service");
  }
  if (plugin_->version != proc::ServicePlugin::kVersion) {
    throw std::runtime_error("service library " + path_ + " is built for interface version " +
                             std::to_string(plugin_->version) + ", this supervisor for " +
                             std::to_string(proc::ServicePlugin::kVersion) +
                             "; install both from one release");
  }
}

}  // namespace supervisor
