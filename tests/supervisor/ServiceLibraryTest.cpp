#include "supervisor/ServiceLibrary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace supervisor {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

std::string refusalOf(const std::string& name) {
  try {
    const ServiceLibrary library(name);
    return "loaded " + library.path();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(ServiceLibrary, MissingFile_NamesPathCauseAndRemedy) {
  EXPECT_THAT(refusalOf("/no/such/libservice.so"),
              AllOf(HasSubstr("service library /no/such/libservice.so cannot be loaded: "),
                    HasSubstr("No such file"), HasSubstr("; set service.library to its path")));
}

TEST(ServiceLibrary, LibraryThatIsNoService_IsRefused) {
  EXPECT_THAT(refusalOf(NO_PLUGIN), HasSubstr("has no entry zanServicePlugin; it is no service"));
}

TEST(ServiceLibrary, OtherInterfaceVersion_IsRefused) {
  EXPECT_THAT(refusalOf(OLD_PLUGIN),
              HasSubstr("is built for interface version 0, this supervisor for 1"));
}

}  // namespace
}  // namespace supervisor
