#include "supervisor/admin/Problem.h"

#include <gtest/gtest.h>

namespace supervisor::admin {
namespace {

std::string bodyOf(std::uint64_t job, const std::optional<std::string>& field) {
  return toResponse({409, "busy", "A title", "what", "do", job, field}).body;
}

TEST(Problem, Document_HasTheMembersThatApply) {
  EXPECT_EQ(bodyOf(0, std::nullopt),
            R"({"type":"/problems/busy","title":"A title","status":409,"detail":"what",)"
            R"("remedy":"do"})"
            "\n");
  EXPECT_EQ(bodyOf(7, "ldu.name"),
            R"({"type":"/problems/busy","title":"A title","status":409,"detail":"what",)"
            R"("remedy":"do","job":7,"field":"ldu.name"})"
            "\n");
}

TEST(Problem, MemberWithoutName_IsStillAField) {
  EXPECT_NE(bodyOf(0, "").find(R"("field":"")"), std::string::npos);
}

TEST(Problem, Response_SaysThatItIsAProblem) {
  const Response response = toResponse({404, "busy", "A title", "what", "do"});
  EXPECT_EQ(response.status, 404u);
  EXPECT_EQ(response.contentType, "application/problem+json");
}

}  // namespace
}  // namespace supervisor::admin
