#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "serviceOrchAG/bridge/Response.h"
#include "tests/support/ReplyDocument.h"

namespace test_support {

/// Expects a response of this status whose document says that and the message and nothing else.
/// `root` is the document's root, such as "heartbeatResponse".
inline void expectReply(const zan_serviceOrchAG::Response* response, const std::string& root,
                        unsigned code, const std::string& message) {
  ASSERT_NE(nullptr, response);
  EXPECT_EQ(code, response->status);
  const ReplyDocument reply = ReplyDocument::parse(response->body);
  EXPECT_EQ(root, reply.root);
  EXPECT_THAT(reply.below, testing::ElementsAre("response"));
  EXPECT_THAT(reply.response, testing::ElementsAre(testing::Pair("code", std::to_string(code)),
                                                   testing::Pair("message", message)));
}

}  // namespace test_support
