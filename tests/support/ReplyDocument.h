#pragma once

#include <string>
#include <utility>
#include <vector>

namespace test_support {

/// A reply document taken apart, for comparison without regard to how it is written.
struct ReplyDocument {
  using Tags = std::vector<std::pair<std::string, std::string>>;

  std::string root;                ///< empty when the body is no document
  std::vector<std::string> below;  ///< names of the root's children, in order
  Tags response;                   ///< children of the first "response", in order
  Tags further;                    ///< the root's other children, in order

  /// Expects nothing; a body that is no document gives an empty result.
  static ReplyDocument parse(const std::string& body);
};

}  // namespace test_support
