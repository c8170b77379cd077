#include "sma/StateFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include <array>
#include <cerrno>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <system_error>

#include "sma/scenario/ScenarioReader.h"

namespace sma {
namespace {

using Json = nlohmann::json;

constexpr unsigned kMostSlot = 65535;

[[noreturn]] void failAt(const std::string& path, const char* what) {
  throw std::runtime_error(path + ": " + what + ": " + std::generic_category().message(errno));
}

msglyr::FileDescriptor openLocked(const std::string& path) {
  const int fd = open(path.c_str(), O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  if (fd < 0) {
    failAt(path, "cannot be opened");
  }
  msglyr::FileDescriptor file(fd, "open");
  if (flock(fd, LOCK_EX | LOCK_NB) != 0) {
    failAt(path, "cannot be locked; does another sma-sim keep its state there?");
  }
  return file;
}

std::string contentOf(const std::string& path, int fd) {
  std::string text;
  std::array<char, 65536> piece{};
  while (true) {
    const ssize_t got = ::read(fd, piece.data(), piece.size());
    if (got < 0 && errno != EINTR) {
      failAt(path, "cannot be read");
    }
    if (got == 0) {
      return text;
    }
    text.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
  }
}

// --- a memory as JSON

template <class Value>
void put(Json& json, const char* key, const std::optional<Value>& value) {
  if (value) {
    json[key] = *value;
  }
}

Json toJson(const TokenKept& memory) {
  return {{"what", "token"}, {"token", memory.token}};
}
Json toJson(const CommandBegun& memory) {
  return {{"what", "began"},
          {"command", memory.command},
          {"app", memory.app},
          {"messageId", memory.messageId}};
}
Json toJson(const AppChanged& memory) {
  Json json{{"what", "app"}, {"app", memory.change.id}};
  put(json, "version", memory.change.version);
  put(json, "enabled", memory.change.enabled);
  put(json, "running", memory.change.running);
  put(json, "external", memory.change.external);
  put(json, "hotfixes", memory.change.hotfixes);
  put(json, "installed", memory.change.installed);
  return json;
}
Json toJson(const DiskFormatted& memory) {
  return {{"what", "formatted"}, {"token", memory.token}};
}
Json toJson(const SettingsKept& memory) {
  return {{"what", "settings"}, {"logLevel", memory.logLevel}, {"timeZone", memory.timeZone}};
}
Json toJson(const LogsCleared& memory) {
  return {{"what", "cleared"}, {"app", memory.app}};
}

std::optional<std::string> textAt(const ScenarioReader& reader, const char* key) {
  return reader.has(key) ? std::optional(reader.string(key)) : std::nullopt;
}

std::optional<bool> flagAt(const ScenarioReader& reader, const char* key) {
  return reader.has(key) ? std::optional(reader.boolean(key)) : std::nullopt;
}

Memory readChange(const ScenarioReader& reader) {
  AppChange change{.id = reader.string("app")};
  change.version = textAt(reader, "version");
  change.enabled = flagAt(reader, "enabled");
  change.running = flagAt(reader, "running");
  change.external = flagAt(reader, "external");
  change.hotfixes = textAt(reader, "hotfixes");
  change.installed = flagAt(reader, "installed");
  return AppChanged{change};
}

Memory readMemory(const ScenarioReader& reader) {
  const std::string what =
      reader.word("what", {"token", "began", "app", "formatted", "settings", "cleared"});
  if (what == "token") {
    return TokenKept{reader.string("token")};
  }
  if (what == "began") {
    return CommandBegun{reader.string("command"), reader.string("app"), reader.string("messageId")};
  }
  if (what == "app") {
    return readChange(reader);
  }
  if (what == "formatted") {
    return DiskFormatted{reader.string("token")};
  }
  if (what == "settings") {
    return SettingsKept{reader.string("logLevel"), reader.string("timeZone")};
  }
  return LogsCleared{reader.string("app")};
}

}  // namespace

StateFile::StateFile(const std::string& path) : path_(path), file_(openLocked(path)) {
  const std::string text = contentOf(path_, file_.get());
  const std::size_t whole = read(text);
  if (whole < text.size() && ftruncate(file_.get(), static_cast<off_t>(whole)) != 0) {
    failAt(path_, "cannot be cut to its whole lines");
  }
}

// How many bytes the finished lines take.
std::size_t StateFile::read(const std::string& text) {
  std::size_t begin = 0;
  for (unsigned line = 1;; ++line) {
    const std::size_t end = text.find('\n', begin);
    if (end == std::string::npos) {
      return begin;
    }
    Json json;
    const ScenarioReader reader(path_ + ":" + std::to_string(line), json);
    try {
      json = Json::parse(text.substr(begin, end - begin));
      if (!json.is_object()) {
        reader.fail("an object is needed here");
      }
      past_[reader.number("slot", 1, kMostSlot)].push_back(readMemory(reader));
    } catch (const Json::exception& error) {
      reader.fail(error.what());
    }
    begin = end + 1;
  }
}

std::vector<Memory> StateFile::take(std::uint32_t slot) {
  const auto node = past_.extract(slot);
  return node.empty() ? std::vector<Memory>() : std::move(node.mapped());
}

void StateFile::append(std::uint32_t slot, const Memory& memory) {
  Json json = std::visit([](const auto& what) { return toJson(what); }, memory);
  json["slot"] = slot;
  // A message id may be no UTF-8.
  const std::string line = json.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
  ssize_t written = -1;
  do {
    written = write(file_.get(), line.data(), line.size());
  } while (written < 0 && errno == EINTR);
  if (written != static_cast<ssize_t>(line.size())) {
    failAt(path_, "cannot be written");
  }
}

}  // namespace sma
