#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "supervisor/admin/Json.h"

namespace supervisor::admin {

/// Texts of a body are no longer than this, in bytes.
inline constexpr std::size_t kMostTextBytes = 255;

/// Reads the members of one object of a body by their names. Every call throws a ProblemError that
/// names the value with its path, such as "ldu.links[0].vlan", when it is not what is wanted.
class Fields {
 public:
  /// `json` outlives this. `path` is the object's own: empty for the body itself.
  explicit Fields(const Json& json, std::string path = "");

  /// The member's value, or null; for a member that the other calls do not cover.
  const Json* find(std::string_view name);
  std::string pathOf(std::string_view name) const;

  /// Printable, of at most kMostTextBytes.
  std::optional<std::string> text(std::string_view name);
  std::string requiredText(std::string_view name);
  std::optional<std::uint64_t> number(std::string_view name, std::uint64_t least,
                                      std::uint64_t most);
  std::optional<Fields> object(std::string_view name);
  std::vector<Fields> list(std::string_view name, std::size_t most);

  /// To be called last: throws for a member that nobody has asked for.
  void end() const;

 private:
  const Json* json_;
  std::string path_;
  std::set<std::string, std::less<>> known_;
};

// The same for single values; `path` is the value's.
std::string textIn(const Json& value, const std::string& path);
std::uint64_t numberIn(const Json& value, const std::string& path, std::uint64_t least,
                       std::uint64_t most);
bool flagIn(const Json& value, const std::string& path);
/// A value of the right kind that cannot be.
[[noreturn]] void refuseValue(const Json& value, const std::string& path,
                              const std::string& remedy);

}  // namespace supervisor::admin
