#include "recorder/decode/access_unit.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/media.h"

namespace recorder {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(UnitKindTest, IsRecognised) {
  using enum UnitKind;
  EXPECT_EQ(ClassifyUnit(kCodecH264, Bytes{0, 0, 0, 1, 0x67, 1, 0, 0, 1, 0x68, 1, 0, 0, 1, 0x65, 1}), kKey);
  EXPECT_EQ(ClassifyUnit(kCodecH264, Bytes{0, 0, 0, 1, 0x67, 1, 0, 0, 0, 1, 0x68, 1}), kNoPicture);
  EXPECT_EQ(ClassifyUnit(kCodecH264, Bytes{0, 0, 0, 1}), kNoPicture);
  EXPECT_EQ(ClassifyUnit(kCodecH264, Bytes{}), kNoPicture);
  EXPECT_EQ(ClassifyUnit(kCodecH265, Bytes{0, 0, 0, 1, 0x40, 1, 0, 0, 1, 0x2a, 1}), kKey) << "CRA";
  EXPECT_EQ(ClassifyUnit(kCodecH265, Bytes{0, 0, 0, 1, 0x42, 1}), kNoPicture);

  const Bytes now{0, 0, 1, 6, 6, 1, 0xc4, 0x80, 0, 0, 1, 0x41, 1};
  const Bytes later{0, 0, 1, 6, 6, 1, 0x44, 0x80, 0, 0, 1, 0x41, 1};
  const Bytes secondMessage{0, 0, 1, 6, 1, 2, 9, 9, 6, 1, 0xc4, 0x80, 0, 0, 1, 0x41, 1};
  EXPECT_EQ(ClassifyUnit(kCodecH264, now), kRecoveryPoint);
  EXPECT_EQ(ClassifyUnit(kCodecH264, later), kPredicted);
  EXPECT_EQ(ClassifyUnit(kCodecH264, secondMessage), kRecoveryPoint);
}

/// One packet of H.264: sequence number, timestamp, marker, and the type of the unit that it completes; a slice is the
/// first of its picture unless it is a further one.
struct Step {
  std::uint16_t sequence;
  std::uint32_t timestamp;
  bool marker;
  std::uint8_t type;
  bool isFurther = false;
};

/// Types of the NAL units in each access unit that comes out, a comma behind each access unit.
std::string Assemble(const std::vector<Step>& steps) {
  AccessUnitAssembler assembler(kCodecH264);
  std::string units;
  for (const Step& step : steps) {
    const std::uint8_t header = step.isFurther ? 0x40 : 0x80;
    assembler.Add({step.marker, step.sequence, step.timestamp, 77}, Bytes{0, 0, 0, 1, step.type, header});
    while (const auto unit = assembler.Take()) {
      for (std::size_t at = 4; at < unit->bytes.size(); at += 6) units += std::to_string(unit->bytes[at]);
      units += ',';
    }
  }
  return units;
}

TEST(AssemblyTest, GivesWholeUnits) {
  EXPECT_EQ(Assemble({{1, 9, false, 7}, {2, 9, true, 5}, {3, 18, true, 1}}), "75,1,") << "a marker ends a unit";
  EXPECT_EQ(Assemble({{1, 9, false, 5}, {2, 18, false, 1}, {3, 27, false, 1}}), "5,1,") << "so does a new timestamp";
  EXPECT_EQ(Assemble({{1, 9, false, 5}, {2, 18, true, 1}}), "5,1,") << "one packet ends two";
  EXPECT_EQ(Assemble({{1, 9, true, 7}, {2, 9, true, 8}, {3, 18, true, 5}}), "785,") << "sets alone wait";
  EXPECT_EQ(Assemble({{1, 9, false, 5}, {3, 9, true, 5}, {4, 18, true, 5}}), "5,") << "a gap in a unit";
  EXPECT_EQ(Assemble({{1, 9, false, 5}, {3, 18, true, 5}, {4, 27, true, 1}}), "1,") << "a gap at either's end";
  EXPECT_EQ(Assemble({{1, 9, true, 5}, {3, 18, true, 1}, {4, 27, true, 5}}), "5,5,") << "a gap behind a marker";
  EXPECT_EQ(Assemble({{65535, 9, false, 5}, {0, 9, true, 5}}), "55,") << "the sequence wraps";
  EXPECT_EQ(Assemble({{1, 9, false, 5}, {1, 9, false, 5}, {2, 9, true, 5}}), "55,") << "sent twice";
  EXPECT_EQ(Assemble({{1, 9, false, 5}, {2, 9, true, 1}, {3, 18, true, 1}}), "51,1,") << "two fields of a frame";
}

TEST(AssemblyTest, SlicesTellWhereMarkersAndTimestampsDoNot) {
  EXPECT_EQ(Assemble({{1, 9, true, 7},
                      {2, 9, true, 5},
                      {3, 9, true, 5, true},
                      {4, 18, true, 1},
                      {5, 18, true, 1, true},
                      {6, 27, true, 7},
                      {7, 27, true, 5}}),
            "75,755,11,")
      << "a marker on every unit: the first is handed out early, the same picture again, and none early from then on";
  EXPECT_EQ(
      Assemble(
          {{1, 9, false, 7}, {2, 10, false, 5}, {3, 11, true, 5, true}, {4, 20, false, 1}, {5, 21, true, 1, true}}),
      "755,11,")
      << "a timestamp for each slice";
  EXPECT_EQ(
      Assemble({{1, 9, false, 5}, {2, 10, false, 5, true}, {3, 18, false, 7}, {4, 18, false, 5}, {5, 27, false, 1}}),
      "55,75,")
      << "and no marker";
  EXPECT_EQ(
      Assemble({{1, 9, true, 5}, {2, 9, true, 5, true}, {4, 18, true, 1, true}, {5, 27, true, 5}, {6, 36, true, 5}}),
      "5,5,")
      << "a gap ends what was open";
}

TEST(AssemblyTest, AMarkerEndsAPictureOfOneOrMoreSlicesAtOnce) {
  EXPECT_EQ(Assemble({{1, 9, false, 5}, {2, 9, true, 5, true}}), "55,");
  EXPECT_EQ(Assemble({{1, 9, false, 5}, {2, 9, true, 12}}), "512,") << "filler data behind it";
}

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

}  // namespace
}  // namespace recorder
