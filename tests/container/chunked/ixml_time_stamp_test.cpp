#include "orvane/container/chunked/ixml_time_stamp.h"

#include <gtest/gtest.h>

#include "tests/container/chunked/followed_file.h"

namespace orvane {
namespace {

namespace Edits = test::Edits;

using test::Bytes;

class IXMLTimeStampTest : public test::FollowedFileTest {
 protected:
  std::string afterHead(const std::string& xml, const FrameFollower& frames) const {
    const Bytes body = test::ByteWriter().text(xml).bytes();
    const Bytes result = after(frames, "iXML", body).value_or(Bytes{});
    std::string text;
    for (const std::byte byte : result) text += static_cast<char>(byte);
    return text;
  }
};

std::string xmlOf(const std::string& high, const std::string& low) {
  return "<BWFXML><SPEED><TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>" + low +
         "</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO><TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI>" + high +
         "</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI></SPEED><BEXT><BWF_TIME_REFERENCE_LOW>" + low +
         "</BWF_TIME_REFERENCE_LOW><BWF_TIME_REFERENCE_HIGH>" + high +
         "</BWF_TIME_REFERENCE_HIGH></BEXT></BWFXML>";
}

TEST_F(IXMLTimeStampTest, MovesWithTheHead) {
  EXPECT_EQ(afterHead(xmlOf("0", "95"), Edits::headTrimmed(10)), xmlOf("0", "105"));
  EXPECT_EQ(afterHead(xmlOf("0", "4294967291"), Edits::headTrimmed(10)), xmlOf("1", "5"));
  EXPECT_EQ(afterHead(xmlOf("1", "5"), Edits::inserted(0, 10)), xmlOf("0", "4294967291"));
  EXPECT_EQ(afterHead(xmlOf("0", "5"), Edits::inserted(0, 10)), xmlOf("0", "0"));
  for (const auto& frames : {Edits::tailTrimmed(10), Edits::cut(40, 60), Edits::none()})
    EXPECT_EQ(afterHead(xmlOf("1", "5"), frames), xmlOf("1", "5"));
}

TEST_F(IXMLTimeStampTest, StaysWhereItIsNotUnderstood) {
  for (const std::string& xml :
       {xmlOf("", "5"), xmlOf("x", "5"), xmlOf("0", "4294967296"), xmlOf("0", "-1"),
        std::string("<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>5"), std::string("<BWFXML/>")})
    EXPECT_EQ(afterHead(xml, Edits::headTrimmed(10)), xml);
}

}  // namespace
}  // namespace orvane
