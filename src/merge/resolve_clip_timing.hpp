#pragma once

#include <string>
#include <unordered_map>

#include "document/document.hpp"
#include "merge/rules.hpp"
#include "timecode/clip_timing.hpp"
#include "timecode/frame_rate.hpp"

namespace pellago {

// The <file> elements of a document that describe a file in full, by id: where a reference
// <file id="F"/> finds what it stands for, wherever that stands in the document.
using DescribedFiles = std::unordered_map<std::string, Element>;

DescribedFiles described_files(const Document& document);

// The clip's first <file> (a clip item's own), or, when that is a reference, the <file> in
// `files` that describes it (the reference itself when none does); none when it has no file.
Element described_file(Element clip, const DescribedFiles* files);

// The timing of a target clip, read from its first rate/timebase, rate/ntsc, displayformat and
// frame elements (first in document order at any depth below the clip). Under the rules that
// follow file references, what the clip lacks comes from the file its first <file> refers to
// (looked up in `files`). Throws Error naming the missing element ("no <rate><timebase>
// element") when the clip has no rate/timebase, or no rate/ntsc unless the rules read a missing
// one as FALSE; the caller adds which clip it was.
ClipTiming resolve_clip_timing(Element clip, const FrameRates& rates, const Rules& rules = {},
                               const DescribedFiles* files = nullptr);

}  // namespace pellago
