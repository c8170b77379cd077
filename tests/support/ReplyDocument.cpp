#include "tests/support/ReplyDocument.h"

#include "framework/noxxml/XMLConverter.h"

namespace test_support {

ReplyDocument ReplyDocument::parse(const std::string& body) {
  ReplyDocument reply;
  noxxml::XMLConverter converter;
  const noxxml::AgElement* const root = converter.xmlDeserialize(body);
  if (root == nullptr) {
    return reply;
  }
  reply.root = root->name().str();
  bool hasResponse = false;
  for (const noxxml::AgElement* child : root->children()) {
    reply.below.push_back(child->name().str());
    if (child->name() == "response" && !hasResponse) {
      hasResponse = true;
      for (const noxxml::AgElement* tag : child->children()) {
        reply.response.emplace_back(tag->name().str(), tag->text().str());
      }
    } else {
      reply.further.emplace_back(child->name().str(), child->text().str());
    }
  }
  return reply;
}

}  // namespace test_support
