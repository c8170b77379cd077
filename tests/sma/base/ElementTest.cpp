#include "sma/base/Element.h"

#include <gtest/gtest.h>

namespace sma {
namespace {

TEST(Element, Document_IsWrittenCompactAndEscaped) {
  Element root{"report", "", {}};
  Element& memory = root.add("Memory");
  memory.add("MemTotalKB", "1");
  root.add("note", "a<b");
  root.add("empty");
  EXPECT_EQ(toXml(root),
            "<report><Memory><MemTotalKB>1</MemTotalKB></Memory><note>a&lt;b</note><empty/>"
            "</report>");
}

TEST(Element, Find_FollowsTheFirstOfEachName) {
  Element root{"report", "", {}};
  root.add("Disk").add("DiskName", "first");
  root.add("Disk").add("DiskName", "second");
  ASSERT_NE(root.find("Disk/DiskName"), nullptr);
  EXPECT_EQ(root.find("Disk/DiskName")->text, "first");
  EXPECT_EQ(root.find("Disk/DiskSize"), nullptr);
  EXPECT_EQ(root.find("Cpu"), nullptr);
  EXPECT_EQ(root.find(""), nullptr);
}

TEST(Element, Copy_ChangesApart) {
  Element root{"report", "", {}};
  root.add("a", "1");
  Element other = root;
  other.find("a")->text = "2";
  EXPECT_EQ(root.find("a")->text, "1");
}

}  // namespace
}  // namespace sma
