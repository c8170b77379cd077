#include "agctl/AppDescription.h"

#include <utility>

#include "framework/base/TextFile.h"

namespace agctl {
namespace {

/// The supervisor takes no longer body.
constexpr std::size_t kMostBytes = 65536;
constexpr std::uint32_t kMegabytesOfGigabyte = 1024;

Failure usage(std::string cause, std::string remedy) {
  return {ExitCode::kUsage, std::move(cause), std::move(remedy), {}};
}

tl::expected<std::string, std::string> readAll(const std::string& file, std::istream& input) {
  if (file != "-") {
    return base::readTextFile(file);
  }
  std::string text(kMostBytes + 1, '\0');
  input.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(input.gcount()));
  return text;
}

Outcome<Json> readDocument(const std::string& file, std::istream& input) {
  const std::string name = file == "-" ? "standard input" : file;
  const auto text = readAll(file, input);
  if (!text) {
    return tl::unexpected(usage(text.error(),
                                "name a file that can be read, or - for standard "
                                "input"));
  }
  if (text->size() > kMostBytes) {
    return tl::unexpected(usage(name + " is longer than 65536 bytes",
                                "describe one application instance, without comments"));
  }
  auto document = readJson(*text);
  if (!document || !document->is_object()) {
    return tl::unexpected(
        usage(name + ": " + (document ? "it is no JSON object" : document.error()),
              R"(write a description such as {"id":"fw-1","slot":3,"app":{"packageFile":"..."}})"));
  }
  return std::move(*document);
}

/// The object of this name, made if need be; where it stands until another member is added.
Outcome<Json*> part(Json& document, const char* name) {
  Json& value = document[name];
  if (value.is_null()) {
    value = Json::object();
  }
  if (!value.is_object()) {
    return tl::unexpected(usage(std::string("'") + name + "' of the description is no object",
                                "give its members in braces"));
  }
  return &value;
}

template <class Value>
void put(Json& object, const char* name, const std::optional<Value>& value) {
  if (value) {
    object[name] = *value;
  }
}

void put(Json& object, const char* name, const std::string& value) {
  if (!value.empty()) {
    object[name] = value;
  }
}

}  // namespace

Outcome<Json> AppDescription::document(std::istream& input) const {
  Outcome<Json> document = Json::object();
  if (!file.empty()) {
    document = readDocument(file, input);
    if (!document) {
      return document;
    }
  }
  put(*document, "id", id);
  put(*document, "slot", slot);
  put(*document, "version", version);
  const auto app = part(*document, "app");
  if (!app) {
    return tl::unexpected(app.error());
  }
  put(**app, "packageFile", package);
  put(**app, "deployType", deployType);
  if (isVdp) {
    (**app)["vdp"] = true;
  }
  if (disk) {
    // What is reserved for the package is counted in gigabytes.
    (**app)["reqDataHdd"] =
        *disk / kMegabytesOfGigabyte + (*disk % kMegabytesOfGigabyte > 0 ? 1 : 0);
  }
  if (cores || memory || disk) {
    const auto resource = part(*document, "resource");
    if (!resource) {
      return tl::unexpected(resource.error());
    }
    put(**resource, "reqCpuCores", cores);
    put(**resource, "maxAllowedRam", memory);
    put(**resource, "reqDataHdd", disk);
  }
  if (!document->contains("slot") || !objectOf(*document, "app").contains("packageFile")) {
    return tl::unexpected(usage("the description names no slot or no package",
                                "give --slot and --package, or both in the file as slot and "
                                "app.packageFile"));
  }
  return document;
}

}  // namespace agctl
