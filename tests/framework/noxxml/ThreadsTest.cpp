#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>
#include <vector>

#include "framework/noxxml/Limits.h"
#include "framework/noxxml/XMLConverter.h"

namespace {

using noxxml::AgElement;
using noxxml::XMLConverter;

// Rounds of writing and reading a document whose values nobody else has.
unsigned countFaults(int thread) {
  unsigned faults = 0;
  for (int round = 0; round < 300; ++round) {
    const std::string value = std::to_string(thread) + '<' + std::to_string(round) + "\x01";
    XMLConverter converter;
    AgElement* const root = converter.xmlAddRootNode("r", "");
    converter.xmlAddChildNode("a", value, root);
    const auto read = XMLConverter::xml2map(converter.xmlSerialize(root), "r");
    const std::map<base::String, base::String> expected = {
        {"a", std::to_string(thread) + '<' + std::to_string(round) + "\xef\xbf\xbd"}};
    faults += read == expected ? 0u : 1u;
  }
  return faults;
}

TEST(Threads, ConvertersOfTheirOwn_DoNotDisturbEachOther) {
  std::vector<unsigned> faults(4, 1);
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&faults, i] { faults[static_cast<std::size_t>(i)] = countFaults(i); });
    }
    for (unsigned i = 0; i < 1000; ++i) {
      noxxml::setLimits({.maxBytes = 4096 + i, .maxDepth = 2 + i % 8});
    }
  }
  noxxml::setLimits({});
  EXPECT_EQ(faults, std::vector<unsigned>(4, 0));
}

TEST(Threads, OneFinishedDocument_IsReadByAll) {
  XMLConverter converter;
  const AgElement* const root = converter.xmlDeserialize("<r><a>1</a><g><a>2</a></g></r>");
  ASSERT_NE(root, nullptr);
  std::vector<std::string> texts(4);
  {
    std::vector<std::jthread> threads;
    for (std::string& text : texts) {
      threads.emplace_back([&text, root] {
        for (int round = 0; round < 300; ++round) {
          text = XMLConverter::xmlSerialize(root) + root->findChild("a")->text().str() +
                 std::to_string(root->xmlFindAllElementsCb("a").size());
        }
      });
    }
  }
  EXPECT_EQ(texts, std::vector<std::string>(4, "<r><a>1</a><g><a>2</a></g></r>12"));
}

}  // namespace
