// Writes a Final Cut Pro XML export of CLIPS master clips (25 fps, in bins of 500) and a log sheet
// for it: one row per clip with logging fields, a marker and an aux timecode; every 50th clip
// logged as three subclips; and one row in a hundred naming no clip. With "tracks", each clip also
// has two audio tracks and each bin a sequence that cuts its clips on one video and two audio
// tracks, as an edited project exports.
//   make_merge_bench PROJECT.xml SHEET.xlsx CLIPS [tracks]
#include <fmt/format.h>
#include <xlsxwriter.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

constexpr int kClipsPerBin = 500;
constexpr int kSubclipEvery = 50;
constexpr int kUnmatchedEvery = 100;

// The opening lines of a master clip's clip item: {0} the clip, {1} the item's number.
constexpr const char* kClipItemHead =
    R"(								<clipitem id="{0}{1}">
									<name>{0}</name>
									<duration>1500</duration>
									<in>-1</in>
									<out>-1</out>
									<start>-1</start>
									<end>-1</end>
									<masterclipid>{0}</masterclipid>)";

// A master clip: {0} its name, {1} its number, {2} its audio, {3} the head of its video item.
constexpr const char* kClip = R"(				<clip id="{0}">
					<uuid>9C1E{1:08X}-0000-4000-8000-000000000000</uuid>
					<updatebehavior>add</updatebehavior>
					<name>{0}</name>
					<duration>1500</duration>
					<rate>
						<ntsc>FALSE</ntsc>
						<timebase>25</timebase>
					</rate>
					<in>-1</in>
					<out>-1</out>
					<masterclipid>{0}</masterclipid>
					<ismasterclip>TRUE</ismasterclip>
					<logginginfo>
						<description/>
						<scene/>
						<shottake/>
						<lognote/>
						<good>FALSE</good>
					</logginginfo>
					<labels>
						<label2/>
					</labels>
					<media>
						<video>
							<track>
{3}
									<file id="{0}.mov">
										<name>{0}.mov</name>
										<pathurl>file://localhost/Volumes/RAID/{0}.mov</pathurl>
										<duration>1500</duration>
										<timecode>
											<string>10:00:00:00</string>
											<frame>900000</frame>
											<source>source</source>
											<displayformat>NDF</displayformat>
										</timecode>
									</file>
									<link>
										<linkclipref>{0}1</linkclipref>
									</link>
								</clipitem>
							</track>
						</video>{2}
					</media>
				</clip>
)";

// An audio track of a master clip: {0} the clip, {1} the track's number, {2} the head of its item.
constexpr const char* kClipAudioTrack = R"(
							<track>
{2}
									<file id="{0}.mov"/>
									<sourcetrack>
										<mediatype>audio</mediatype>
										<trackindex>{1}</trackindex>
									</sourcetrack>
								</clipitem>
							</track>)";

std::string clip_audio(const std::string& name) {
  return fmt::format("\n\t\t\t\t\t\t<audio>{}{}\n\t\t\t\t\t\t</audio>",
                     fmt::format(kClipAudioTrack, name, 1, fmt::format(kClipItemHead, name, 2)),
                     fmt::format(kClipAudioTrack, name, 2, fmt::format(kClipItemHead, name, 3)));
}

// One clip item of a sequence track: {0} the clip, {1} the item's id, {2} its start in the
// sequence, {3} its end, {4} the media type, {5} the source track, {6} and {7} the linked items.
constexpr const char* kSequenceItem =
    R"(						<clipitem id="{1}">
							<name>{0}</name>
							<enabled>TRUE</enabled>
							<duration>1500</duration>
							<rate>
								<ntsc>FALSE</ntsc>
								<timebase>25</timebase>
							</rate>
							<start>{2}</start>
							<end>{3}</end>
							<in>250</in>
							<out>500</out>
							<masterclipid>{0}</masterclipid>
							<file id="{0}.mov"/>
							<sourcetrack>
								<mediatype>{4}</mediatype>
								<trackindex>{5}</trackindex>
							</sourcetrack>
							<link>
								<linkclipref>{6}</linkclipref>
								<mediatype>{4}</mediatype>
							</link>
							<link>
								<linkclipref>{7}</linkclipref>
							</link>
						</clipitem>
)";

std::string clip_name(int clip) {
  return fmt::format("A{:03}_C{:03}_0611AB", clip / 1000, clip % 1000);
}

// A track of the sequence that cuts clips [first, end) one after another, 250 frames each.
void write_sequence_track(std::ofstream& out, int first, int end, const char* media_type,
                          int source_track) {
  out << "\t\t\t\t\t<track>\n";
  for (int clip = first; clip < end; ++clip) {
    const std::string name = clip_name(clip);
    const int start = (clip - first) * 250;
    const std::string id = fmt::format("{} {} {}", name, media_type, source_track);
    out << fmt::format(kSequenceItem, name, id, start, start + 250, media_type, source_track,
                       fmt::format("{} video 1", name), fmt::format("{} audio 1", name));
  }
  out << "\t\t\t\t\t</track>\n";
}

void write_sequence(std::ofstream& out, int first, int end) {
  out << fmt::format(
      "\t\t\t<sequence id=\"sequence {0}\">\n\t\t\t\t<name>Day {0} edit</name>\n"
      "\t\t\t\t<duration>{1}</duration>\n\t\t\t\t<rate>\n\t\t\t\t\t<ntsc>FALSE</ntsc>\n"
      "\t\t\t\t\t<timebase>25</timebase>\n\t\t\t\t</rate>\n\t\t\t\t<media>\n\t\t\t\t<video>\n",
      first / kClipsPerBin + 1, (end - first) * 250);
  write_sequence_track(out, first, end, "video", 1);
  out << "\t\t\t\t</video>\n\t\t\t\t<audio>\n";
  write_sequence_track(out, first, end, "audio", 1);
  write_sequence_track(out, first, end, "audio", 2);
  out << "\t\t\t\t</audio>\n\t\t\t\t</media>\n\t\t\t</sequence>\n";
}

void write_project(const std::string& path, int clips, bool tracks) {
  std::ofstream out(path, std::ios::binary);
  out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE xmeml>\n<xmeml version=\"5\">\n"
         "\t<project>\n\t\t<name>Benchmark</name>\n\t\t<children>\n";
  for (int clip = 0; clip < clips; ++clip) {
    const int bin_start = clip - clip % kClipsPerBin;
    if (clip == bin_start) {
      out << fmt::format("\t\t<bin>\n\t\t\t<name>Day {}</name>\n\t\t\t<children>\n",
                         clip / kClipsPerBin + 1);
    }
    const std::string name = clip_name(clip);
    out << fmt::format(kClip, name, clip, tracks ? clip_audio(name) : "",
                       fmt::format(kClipItemHead, name, 1));
    if (clip % kClipsPerBin == kClipsPerBin - 1 || clip == clips - 1) {
      if (tracks) write_sequence(out, bin_start, clip + 1);
      out << "\t\t\t</children>\n\t\t</bin>\n";
    }
  }
  out << "\t\t</children>\n\t</project>\n</xmeml>\n";
}

const std::vector<std::string> kHeaders{"Name",
                                        "Subclip Name",
                                        "In",
                                        "Out",
                                        "Good",
                                        "Label 2",
                                        "Scene",
                                        "Shot/Take",
                                        "Log Note",
                                        "Aux TC 1",
                                        "Marker Timecode",
                                        "Marker Name",
                                        "Marker Color"};

void write_row(lxw_worksheet* sheet, lxw_row_t row, const std::vector<std::string>& cells) {
  for (std::size_t column = 0; column < cells.size(); ++column) {
    if (cells[column].empty()) continue;
    worksheet_write_string(sheet, row, static_cast<lxw_col_t>(column), cells[column].c_str(),
                           nullptr);
  }
}

std::vector<std::string> log_row(const std::string& name, int take, int subclip) {
  const int second = 5 + subclip * 15;
  return {name,
          subclip < 0 ? "" : fmt::format("{} part {}", name, subclip + 1),
          fmt::format("10:00:{:02}:00", second),
          fmt::format("10:00:{:02}:00", second + 10),
          take % 3 == 0 ? "yes" : "no",
          "Interview",
          fmt::format("{}", take / 10 + 1),
          fmt::format("{}", take % 10 + 1),
          "logged by the benchmark",
          "11:00:00:00",
          fmt::format("10:00:{:02}:12", second + 2),
          "Check",
          "blue"};
}

void write_sheet(const std::string& path, int clips) {
  lxw_workbook* workbook = workbook_new(path.c_str());
  lxw_worksheet* sheet = workbook_add_worksheet(workbook, nullptr);
  write_row(sheet, 0, kHeaders);
  lxw_row_t row = 1;
  for (int clip = 0; clip < clips; ++clip) {
    const std::string name = clip_name(clip);
    if (clip % kSubclipEvery == 0) {
      for (int subclip = 0; subclip < 3; ++subclip)
        write_row(sheet, row++, log_row(name, clip, subclip));
    } else {
      write_row(sheet, row++, log_row(name, clip, -1));
    }
    if (clip % kUnmatchedEvery == 0) write_row(sheet, row++, log_row(name + "_MISSING", clip, -1));
  }
  if (workbook_close(workbook) != LXW_NO_ERROR) {
    std::fprintf(stderr, "cannot write %s\n", path.c_str());
    std::exit(1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bool tracks = argc == 5 && std::string(argv[4]) == "tracks";
  if (argc != 4 && !tracks) {
    std::fprintf(stderr, "usage: make_merge_bench PROJECT.xml SHEET.xlsx CLIPS [tracks]\n");
    return 2;
  }
  const int clips = std::atoi(argv[3]);
  write_project(argv[1], clips, tracks);
  write_sheet(argv[2], clips);
  return 0;
}
