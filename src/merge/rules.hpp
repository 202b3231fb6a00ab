#pragma once

namespace pellago {

// Every choice of the merge that a sheet or an export may want made otherwise, as one named
// switch: the steps read a switch where they would otherwise branch on a mode, and a reader sees
// here every way the default rules depart from the classic ones.
struct Rules {
  // A row whose Name no master clip has logs the clip items in sequences whose name, or whose
  // file's name without its extension, is that Name: logging fields and markers, never In, Out
  // or subclips.
  bool log_clip_items = false;
  // A clip further down the document than the sheet has data rows only gets its In/Out clearing
  // and its subclip copies; its timing, subclip, logging fields, markers and aux timecodes are
  // left as they are.
  bool position_limit = true;
  // A clip whose file is a reference (<file id="F"/>, described in full elsewhere) takes the rate,
  // display format and start frame it lacks from the <file id="F"> that describes it.
  bool follow_file_references = false;
  // TRUE and FALSE are read in any letter case where the document holds them (<ntsc>).
  bool any_case_truth_words = false;
  // A clip without a <rate><ntsc> has an NTSC flag of FALSE, as the applications mean by leaving
  // it out, instead of failing.
  bool missing_ntsc_is_false = false;
  // A clip without the element a logging column writes, or without the <in> or <out> an empty In
  // or Out cell clears, gets one where Final Cut Pro 7 writes it (with the <logginginfo>,
  // <labels> or <comments> that holds it), instead of the cell being dropped or the merge
  // failing.
  bool create_missing_elements = false;
};

// The rules the merge has always followed: for the Ruby module and --classic.
constexpr Rules classic_rules() { return Rules{}; }

// The rules for exports and sheets as real applications and loggers write them: what the program,
// the app and the Python module use unless asked for the classic rules.
constexpr Rules default_rules() {
  return Rules{.log_clip_items = true,
               .position_limit = false,
               .follow_file_references = true,
               .any_case_truth_words = true,
               .missing_ntsc_is_false = true,
               .create_missing_elements = true};
}

// The classic rules when asked for, the default ones otherwise.
constexpr Rules rules_for(bool classic) { return classic ? classic_rules() : default_rules(); }

}  // namespace pellago
