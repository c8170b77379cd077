#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "tests/serviceOrchAG/handlers/RegisterHarness.h"

// What the engine is told of a blade and its images.

namespace zan_serviceOrchAG::register_test {
namespace {

using testing::ElementsAre;

/// The arguments of OsControllerVersion.
std::tuple<std::uint64_t, std::uint32_t, std::uint32_t, base::String, base::String, base::String,
           std::uint32_t, base::String, base::String, std::uint32_t, bool, std::uint8_t,
           std::uint8_t, base::String>
imagesOf(std::uint32_t slot, const char* runningVersion, const char* runningImage,
         std::uint32_t size, const char* cachedVersion, const char* cachedImage, bool isValid) {
  return {0, 1,       slot, "", runningVersion, runningImage, size, cachedVersion, cachedImage,
          0, isValid, 1,    6,  "VOLK"};
}

TEST_F(Register, Validation_CarriesSlotRunningVersionAndToken) {
  handle(kFull);
  EXPECT_THAT(svc_.calls<ValidateBladeStateMe>(),
              ElementsAre(std::tuple(3U, base::String("1.1"), base::String("mine"))));
  const auto call = svc_.sent(ValidateBladeStateMe::kClassId).at(0);
  EXPECT_TRUE(call.responseRequired);
  EXPECT_EQ(4, static_cast<int>(call.priority));
}

TEST_F(Register, Images_AreReportedWithoutAWait) {
  handle(kFull);
  EXPECT_THAT(svc_.calls<OsControllerVersionMe>(),
              ElementsAre(imagesOf(3, "1.1", "r.img", 11, "2.2", "c.img", true)));
  const auto call = svc_.sent(OsControllerVersionMe::kClassId).at(0);
  EXPECT_FALSE(call.responseRequired);
  EXPECT_EQ(4, static_cast<int>(call.priority));
  EXPECT_NE(svc_.sent()[0].cookie, svc_.sent()[1].cookie);
  EXPECT_EQ(1U, handler_.knownCookies()) << "only the validation is waited for";
}

TEST_F(Register, Images_AreReportedWhateverTheVerdict) {
  answer(false, true, "");
  handle(kFull);
  answer(false, false, "");
  handle(kFull);
  EXPECT_THAT(svc_.calls<OsControllerVersionMe>(),
              ElementsAre(imagesOf(3, "1.1", "r.img", 11, "2.2", "c.img", false),
                          imagesOf(3, "1.1", "r.img", 11, "2.2", "c.img", false)));
}

struct ImageCase {
  const char* name;
  std::string images;
  const char* runningVersion;
  const char* runningImage;
  unsigned size;
  const char* cachedVersion;
  const char* cachedImage;
  std::vector<std::string> missing;
};

void PrintTo(const ImageCase& image, std::ostream* out) {
  *out << image.name;
}

class Images : public Register, public testing::WithParamInterface<ImageCase> {};

TEST_P(Images, OfARequest_AreReportedAsSent) {
  handle(requestOf(kAddress + "<token>mine</token>" + kPresence + GetParam().images));
  EXPECT_THAT(
      svc_.calls<OsControllerVersionMe>(),
      ElementsAre(imagesOf(3, GetParam().runningVersion, GetParam().runningImage, GetParam().size,
                           GetParam().cachedVersion, GetParam().cachedImage, true)));
  std::vector<LogLine> expected;
  for (const std::string& tag : GetParam().missing) {
    expected.push_back(missing(tag));
  }
  EXPECT_EQ(expected, log_.linesOf("missingTagError"));
}

INSTANTIATE_TEST_SUITE_P(
    All, Images,
    testing::Values(
        ImageCase{"both", kCache + kRunning, "1.1", "r.img", 11, "2.2", "c.img", {}},
        ImageCase{"running image first", kRunning + kCache, "1.1", "r.img", 11, "2.2", "c.img", {}},
        ImageCase{"cached only", kCache, "", "", 22, "2.2", "c.img", {"runningPlatformImage"}},
        ImageCase{"running only", kRunning, "1.1", "r.img", 11, "", "", {"cachePlatformImage"}},
        ImageCase{"none", "", "", "", 0, "", "", {"cachePlatformImage", "runningPlatformImage"}},
        ImageCase{"two cached",
                  kCache + kCache + kRunning,
                  "1.1",
                  "r.img",
                  11,
                  "",
                  "",
                  {"cachePlatformImage"}},
        ImageCase{"two running",
                  kCache + kRunning + kRunning,
                  "",
                  "",
                  22,
                  "2.2",
                  "c.img",
                  {"runningPlatformImage"}},
        ImageCase{"size of the cached image stands in",
                  kCache + "<runningPlatformImage><osVersion>1.1</osVersion><imageName>r.img"
                           "</imageName><checksum/></runningPlatformImage>",
                  "1.1",
                  "r.img",
                  22,
                  "2.2",
                  "c.img",
                  {"size"}},
        ImageCase{"size that is no number is 0",
                  kCache + "<runningPlatformImage><osVersion>1.1</osVersion><imageName>r.img"
                           "</imageName><size>big</size><checksum/></runningPlatformImage>",
                  "1.1",
                  "r.img",
                  0,
                  "2.2",
                  "c.img",
                  {}},
        ImageCase{"blanks",
                  "<cachePlatformImage><osVersion> 2.2\n</osVersion><imageName>\tc.img"
                  "</imageName><size> 22 </size><checksum_x/></cachePlatformImage>" +
                      kRunning,
                  "1.1",
                  "r.img",
                  11,
                  "2.2",
                  "c.img",
                  {}},
        ImageCase{"empty images",
                  "<cachePlatformImage/><runningPlatformImage/>",
                  "",
                  "",
                  0,
                  "",
                  "",
                  {"osVersion", "imageName", "size", "checksum", "osVersion", "imageName", "size",
                   "checksum"}},
        ImageCase{"nested deeper",
                  "<deep>" + kCache + "</deep>" + kRunning,
                  "1.1",
                  "r.img",
                  11,
                  "2.2",
                  "c.img",
                  {}}));

struct ChecksumCase {
  const char* tag;
  bool counts;
};

class Checksums : public Register, public testing::WithParamInterface<ChecksumCase> {};

TEST_P(Checksums, TagOfAnImage_CountsByItsFirstPiece) {
  const std::string tag = GetParam().tag;
  handle(requestOf(kAddress + "<token/>" + kPresence + kCache +
                   "<runningPlatformImage><osVersion/><imageName/><size/><" + tag +
                   "/></runningPlatformImage>"));
  EXPECT_EQ(GetParam().counts ? 0U : 1U,
            log_.count(5, "No <checksum> tag found in the register request"));
}

INSTANTIATE_TEST_SUITE_P(
    All, Checksums,
    testing::Values(ChecksumCase{"checksum", true}, ChecksumCase{"checksum_md5", true},
                    ChecksumCase{"checksum_", true}, ChecksumCase{"checksum_sha_256", true},
                    ChecksumCase{"checksums", false}, ChecksumCase{"_checksum_x", false},
                    ChecksumCase{"md5_checksum", false}, ChecksumCase{"Checksum", false}));

}  // namespace
}  // namespace zan_serviceOrchAG::register_test
