#pragma once

namespace pellago {

// Every choice of the merge that a sheet or an export may want made otherwise, as one named
// switch: the steps read a switch where they would otherwise branch on a mode, and a reader sees
// every departure from the classic rules here.
struct Rules {
  // A clip further down the document than the sheet has data rows only gets its In/Out clearing
  // and its subclip copies; its timing, subclip, logging fields, markers and aux timecodes are
  // left as they are.
  bool position_limit = true;
};

// The rules the merge has always followed, for the Ruby module and for --classic.
constexpr Rules classic_rules() { return Rules{.position_limit = true}; }

}  // namespace pellago
