#include "recorder/media/access_unit.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/media.h"

namespace recorder {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct KindCase {
  const char* name;
  Bytes unit;
  std::uint32_t codec;
  UnitKind kind;
};

const KindCase kKindCases[] = {
    {"H264Idr", {0, 0, 0, 1, 0x67, 1, 0, 0, 1, 0x68, 1, 0, 0, 1, 0x65, 1}, kCodecH264, UnitKind::kKey},
    {"H264SetsAlone", {0, 0, 0, 1, 0x67, 1, 0, 0, 0, 1, 0x68, 1}, kCodecH264, UnitKind::kNoPicture},
    {"H264Slice", {0, 0, 0, 1, 0x41, 1}, kCodecH264, UnitKind::kPredicted},
    {"H264RecoveryNow", {0, 0, 1, 6, 6, 1, 0xc4, 0x80, 0, 0, 1, 0x41, 1}, kCodecH264, UnitKind::kRecoveryPoint},
    {"H264RecoveryLater", {0, 0, 1, 6, 6, 1, 0x44, 0x80, 0, 0, 1, 0x41, 1}, kCodecH264, UnitKind::kPredicted},
    {"H264RecoveryIsSecondMessage",
     {0, 0, 1, 6, 1, 2, 9, 9, 6, 1, 0xc4, 0x80, 0, 0, 1, 0x41, 1},
     kCodecH264,
     UnitKind::kRecoveryPoint},
    {"H264StartCodeAtTheEnd", {0, 0, 0, 1}, kCodecH264, UnitKind::kNoPicture},
    {"H265Cra", {0, 0, 0, 1, 0x40, 1, 0, 0, 1, 0x2a, 1}, kCodecH265, UnitKind::kKey},
    {"H265Trailing", {0, 0, 0, 1, 0x02, 1}, kCodecH265, UnitKind::kPredicted},
    {"H265SetsAlone", {0, 0, 0, 1, 0x42, 1}, kCodecH265, UnitKind::kNoPicture},
    {"Mpeg4Intra", {0, 0, 1, 0xb0, 1, 0, 0, 1, 0xb6, 0x10}, kCodecMpeg4, UnitKind::kKey},
    {"Mpeg4Predicted", {0, 0, 1, 0xb6, 0x50}, kCodecMpeg4, UnitKind::kPredicted},
    {"Jpeg", {0xff, 0xd8, 0xff}, kCodecJpeg, UnitKind::kKey},
    {"Empty", {}, kCodecH264, UnitKind::kNoPicture},
};

class KindTest : public testing::TestWithParam<KindCase> {};

TEST_P(KindTest, IsRecognised) { EXPECT_EQ(ClassifyUnit(GetParam().codec, GetParam().unit), GetParam().kind); }

INSTANTIATE_TEST_SUITE_P(Unit, KindTest, testing::ValuesIn(kKindCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CodecTest, IsRecognisedFromConfigurationOrFrame) {
  EXPECT_EQ(RecogniseCodec(Bytes{0, 0, 0, 1, 0x67, 0x64}, Bytes{0, 0, 0, 1, 0x65, 0x88}), kCodecH264);
  EXPECT_EQ(RecogniseCodec(Bytes{0, 0, 0, 1, 0x40, 1}, Bytes{0, 0, 0, 1, 0x28, 1}), kCodecH265);
  EXPECT_EQ(RecogniseCodec(Bytes{}, Bytes{0, 0, 0, 1, 0x46, 1, 0, 0, 1, 0x42, 1}), kCodecH265);
  EXPECT_EQ(RecogniseCodec(Bytes{0, 0, 1, 0xb0, 1}, Bytes{0, 0, 1, 0xb6, 0x10}), kCodecMpeg4);
  EXPECT_EQ(RecogniseCodec(Bytes{0, 0, 0, 1, 0x67, 0x64}, Bytes{0xff, 0xd8, 0xff}), kCodecJpeg);
  EXPECT_EQ(RecogniseCodec(Bytes{}, Bytes{1, 2, 3}), 0U);
}

/// One packet of H.264: sequence number, timestamp, marker, and the type of the unit that it completes.
struct Step {
  std::uint16_t sequence;
  std::uint32_t timestamp;
  bool marker;
  std::uint8_t type;
};

struct AssemblyCase {
  const char* name;
  std::vector<Step> steps;
  const char* units;  // types of the NAL units in each finished unit, a comma behind each unit
};

const AssemblyCase kAssemblyCases[] = {
    {"MarkerEnds", {{1, 9, false, 7}, {2, 9, true, 5}, {3, 18, true, 1}}, "75,1,"},
    {"TimestampEnds", {{1, 9, false, 5}, {2, 9, false, 5}, {3, 18, false, 1}, {4, 27, false, 1}}, "55,1,"},
    {"OnePacketEndsTwo", {{1, 9, false, 5}, {2, 18, true, 1}}, "5,1,"},
    {"SetsAloneWait", {{1, 9, true, 7}, {2, 9, true, 8}, {3, 18, true, 5}}, "785,"},
    {"GapInUnit", {{1, 9, false, 5}, {3, 9, true, 5}, {4, 18, true, 5}}, "5,"},
    {"GapMayBeAtBothEnds", {{1, 9, false, 5}, {3, 18, true, 5}, {4, 27, true, 1}}, "1,"},
    {"GapBehindMarker", {{1, 9, true, 5}, {3, 18, true, 1}, {4, 27, true, 5}}, "5,5,"},
    {"SequenceWraps", {{65535, 9, false, 5}, {0, 9, true, 5}}, "55,"},
    {"SentTwice", {{1, 9, false, 5}, {1, 9, false, 5}, {2, 9, true, 5}}, "55,"},
};

class AssemblyTest : public testing::TestWithParam<AssemblyCase> {};

TEST_P(AssemblyTest, GivesWholeUnits) {
  AccessUnitAssembler assembler(kCodecH264);
  std::string units;
  for (const Step& step : GetParam().steps) {
    assembler.Add({step.marker, step.sequence, step.timestamp, 77}, Bytes{0, 0, 0, 1, step.type});
    while (const auto unit = assembler.Take()) {
      for (std::size_t at = 4; at < unit->bytes.size(); at += 5) units += std::to_string(unit->bytes[at]);
      units += ',';
    }
  }
  EXPECT_EQ(units, GetParam().units);
}

INSTANTIATE_TEST_SUITE_P(Unit, AssemblyTest, testing::ValuesIn(kAssemblyCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(AssemblyTest, BoundsAUnit) {
  AccessUnitAssembler assembler(kCodecH264);
  const Bytes megabyte(std::size_t{1} << 20, 0xff);
  std::uint16_t sequence = 0;
  assembler.Add({false, sequence++, 9, 77}, Bytes{0, 0, 0, 1, 5});
  for (int i = 0; i < 32; ++i) assembler.Add({false, sequence++, 9, 77}, megabyte);
  assembler.Add({true, sequence++, 9, 77}, megabyte);
  EXPECT_FALSE(assembler.Take().has_value());
  assembler.Add({true, sequence, 18, 77}, Bytes{0, 0, 0, 1, 5});
  EXPECT_TRUE(assembler.Take().has_value());
}

TEST(PacketizerTest, TakesAUnitOnceAndFlagsKeyFrames) {
  MP4Stream stream(MP4_STREAM_VIDEO, 7);
  EXPECT_NE(stream.Init(), 0);
  EXPECT_EQ(stream.packetizer, nullptr);  // no codec is known yet
  stream.format.codec = kCodecH264;
  ASSERT_EQ(stream.Init(), 0);
  for (const std::uint8_t type : Bytes{5, 1}) {
    auto* input = new MediaUnit(5);
    const Bytes bytes{0, 0, 0, 1, type};
    std::copy(bytes.begin(), bytes.end(), input->GetBuffer());
    const std::unique_ptr<MediaUnit> output(stream.packetizer->Packetize(&stream, &input));
    EXPECT_EQ(input, nullptr);
    ASSERT_NE(output, nullptr);
    EXPECT_EQ((output->GetFrameType() & FRAME_FLAG_KEY) != 0, type == 5);
    EXPECT_EQ(stream.packetizer->Packetize(&stream, &input), nullptr);
    EXPECT_EQ(stream.packetizer->Packetize(&stream, nullptr), nullptr);
  }
}

}  // namespace
}  // namespace recorder
