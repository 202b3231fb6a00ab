#include "merge/aux_timecodes.hpp"

#include <gtest/gtest.h>

#include "merge/merge_files.hpp"

namespace pellago {
namespace {

using merge_test::make_row;
using merge_test::read_data;
using merge_test::replace_all;

std::string with_aux_timecodes(const std::string& xml, const LogRow& row,
                               const ClipTiming& timing) {
  Document document = Document::parse_string(xml);
  apply_aux_timecodes(place_aux(document.first("clip"), timing), row, timing);
  return document.write();
}

// Neither the start frame nor the rate entry plays a part: aux timecodes are absolute frame
// counts at the timebase.
const ClipTiming pal_from_one_hour{25, "FALSE", "NDF", std::nullopt, 90000};

TEST(AuxTimecodes, AuxTc1ReplacesTheFirstAux1AndAnEmptyAuxTc2KeepsAux2) {
  const LogRow row = make_row({{"Aux TC 1", "02:00:00:00"}, {"Aux TC 2", ""}});
  EXPECT_EQ(with_aux_timecodes(read_data("steps_clip.xml"), row, pal_from_one_hour),
            read_data("steps_clip_aux.xml"));
}

// steps_dropframe_clip.xml: the clip says NDF, its file timecode DF; it holds two aux1 timecodes.
TEST(AuxTimecodes, FramesAreCountedInTheFileTimecodesDisplayFormat) {
  const ClipTiming ntsc_without_rate_entry{30, "true", "NDF", std::nullopt, 107892};
  EXPECT_EQ(with_aux_timecodes(read_data("steps_dropframe_clip.xml"),
                               make_row({{"Aux TC 1", "01:00:00;00"}}), ntsc_without_rate_entry),
            read_data("steps_dropframe_clip_aux.xml"));
}

TEST(AuxTimecodes, ClipWithoutFileTimecodeDisplayFormatIsLeftAlone) {
  const std::string clip = replace_all(read_data("steps_clip.xml"),
                                       "\t\t\t\t\t\t\t\t<displayformat>NDF</displayformat>\n", "");
  const LogRow row = make_row({{"Aux TC 1", "02:00:00:00"}, {"Aux TC 2", "03:00:00:00"}});
  EXPECT_EQ(with_aux_timecodes(clip, row, pal_from_one_hour), clip);
}

}  // namespace
}  // namespace pellago
