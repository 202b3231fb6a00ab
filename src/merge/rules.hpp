#pragma once

namespace pellago {

// Every choice of the merge that a sheet or an export may want made otherwise, as one named
// switch: the steps read a switch where they would otherwise branch on a mode, and a reader sees
// here every way the default rules depart from the classic ones.
struct Rules {
  // An XML document that is not well-formed is refused; otherwise what the parser recovers of it
  // is merged, and the clips after its first error may be lost.
  bool refuse_malformed_xml = false;
  // An empty cell changes nothing, as an absent column does: its In or Out point, Good, logging
  // fields and marker texts stay as the clip has them (an empty Marker Name gives "Marker 1"...).
  // Otherwise an empty cell writes the empty text, clears In and Out and marks a clip not good.
  bool blank_cells_change_nothing = false;
  // Good reads the words loggers mark a circled take with, in any letter case, blanks around
  // ignored: yes, y, true, x, a tick (✓ ✔), 1 or a TRUE cell mark the clip good; no, n, false, 0
  // or a FALSE cell mark it not good; any other text leaves its Good as it is. Otherwise yes or y,
  // exactly but for letter case, mark it good and any other text not good.
  bool good_words = false;
  // The header row is the first of the sheet's first 20 rows that has a Name header (the rows above
  // are titles), and columns without a text header are left out; a sheet's extension is read in
  // any letter case (Day1.XLSX). Otherwise row 1 holds the headers, every column in use needs one,
  // and only .xls and .xlsx, exactly, are log sheets.
  bool sheet_as_typed = false;
  // A cell is read as the spreadsheet shows it: a number or a date by its number format (12 as
  // "12", 0.5 under "0%" as "50%", a date under "d-mmm" as "4-Mar"), a truth value as TRUE or
  // FALSE. Otherwise a number reads as a float prints (12 as "12.0"), a date in ISO 8601 form and
  // a truth value as true or false.
  bool cells_as_shown = false;
  // A marker whose timecode is no timecode at the clip's timebase, or lands outside the clip's
  // media, is left out, and so is an aux timecode that is no timecode, and a row whose In and Out
  // cannot cut its subclip (Out before In, outside the media) whole; the merge counts the rows not
  // fully applied. Otherwise they are written as they read (TBD as 00:00:00:00).
  bool leave_out_impossible_values = false;
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
  // A clip's media starts at its file's own timecode (the file's first <timecode> that is not an
  // aux one): at its <frame>, or, when it has none, at its <string> counted at the clip's rate.
  // Otherwise the first <frame> anywhere in the clip is the start, even an aux timecode's.
  bool start_at_source_timecode = false;
  // TRUE and FALSE are read in any letter case where the document holds them (<ntsc>).
  bool any_case_truth_words = false;
  // A clip whose timebase and ntsc name no rate of the table (15 frames per second, say) is counted
  // at its timebase, times 1000/1001 when ntsc is TRUE, instead of failing where a timecode is
  // placed on it. A timebase below 1 still names no rate.
  bool rates_beyond_the_table = false;
  // A clip without a <rate><ntsc> has an NTSC flag of FALSE, as the applications mean by leaving
  // it out, instead of failing.
  bool missing_ntsc_is_false = false;
  // A clip without the element a logging column writes, or without the <in> or <out> an empty In
  // or Out cell clears, gets one where Final Cut Pro 7 writes it (with the <logginginfo>,
  // <labels> or <comments> that holds it), instead of the cell being dropped or the merge
  // failing. So do a subclip and its track clip items, for what the subclip sets; a clip without
  // a <uuid> or an id is copied all the same (its name stands in for the id), and an aux
  // timecode is counted in the clip's display format when its file's timecode has none.
  bool create_missing_elements = false;
  // Of the rows that name one clip, those that cut a subclip (In and Out both hold timecodes) each
  // get a copy of the clip, inserted after it; the others log the clip itself, which otherwise
  // keeps its name, duration, in, out, links and clip items. A subclip without a Subclip Name
  // is named as Final Cut Pro 7 names one ("A001 Subclip"), its clip items too. Without this switch
  // the first row cuts the clip itself and every further row cuts a copy appended to the clip's
  // parent.
  bool subclips_beside_master_clip = false;
  // What merging a sheet again into a merge's output would add twice is updated instead: a marker
  // at the frame and with the name of one its clip has is not added; a row that cuts a subclip an
  // earlier merge cut from its clip (a copy of it named as the row's Subclip Name, or, for a row
  // without one, cut at the same In and Out) writes into that subclip, whose clip items' offsets
  // are set again rather than given a second <subclipinfo>, and a new copy takes a copy number
  // not yet in use; an aux timecode is replaced where it stands. Without this switch markers and
  // copies are always added, and a replaced aux timecode goes to the end of its file.
  bool merge_again_in_place = false;
};

// The rules the merge has always followed: for the Ruby module and --classic.
constexpr Rules classic_rules() { return Rules{}; }

// The rules for exports and sheets as real applications and loggers write them: what the program,
// the app and the Python module use unless asked for the classic rules.
constexpr Rules default_rules() {
  return Rules{.refuse_malformed_xml = true,
               .blank_cells_change_nothing = true,
               .good_words = true,
               .sheet_as_typed = true,
               .cells_as_shown = true,
               .leave_out_impossible_values = true,
               .log_clip_items = true,
               .position_limit = false,
               .follow_file_references = true,
               .start_at_source_timecode = true,
               .any_case_truth_words = true,
               .rates_beyond_the_table = true,
               .missing_ntsc_is_false = true,
               .create_missing_elements = true,
               .subclips_beside_master_clip = true,
               .merge_again_in_place = true};
}

// The classic rules when asked for, the default ones otherwise.
constexpr Rules rules_for(bool classic) { return classic ? classic_rules() : default_rules(); }

}  // namespace pellago
