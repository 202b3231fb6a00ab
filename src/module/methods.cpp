#include "module/methods.hpp"

#include <ruby.h>

#include <cmath>
#include <string>

#include "merge/add_log_notes.hpp"
#include "merge/messages.hpp"
#include "module/ruby_bridge.hpp"
#include "module/ruby_host.hpp"
#include "timecode/to_frames.hpp"
#include "workbook/workbook.hpp"

namespace pellago::ruby {

namespace {

bool add_log_notes_defined = false;

void check_argument_count(int argc) {
  if (argc != 3) rb_raise(rb_eArgError, "wrong number of arguments (%d for %d)", argc, 3);
}

std::string path_argument(VALUE argument) {
  return string_of(protect([&] { return rb_get_path(argument); }));
}

VALUE merge(VALUE receiver, const VALUE* argv) {
  const std::string sheet_path = path_argument(argv[0]);
  // Nothing but the sheet's extension is looked at for a file that is not a log sheet.
  if (sheet_kind(sheet_path) == SheetKind::not_a_log_sheet) return Qfalse;
  const std::string xml_path = path_argument(argv[1]);
  const std::string output_path = path_argument(argv[2]);
  const bool report_progress = protect([] { return rb_gv_get("$ruby_cocoa"); }) != Qfalse;
  FrameRates frame_rates;
  const MergeReport report = add_log_notes(sheet_path, xml_path, output_path,
                                           host_for(receiver, report_progress, frame_rates));
  if (report.recovered.count > 0) {
    const std::string warning = recovered_warning(report.recovered, xml_path);
    protect([&] {
      rb_warn("%s", warning.c_str());
      return Qnil;
    });
  }
  return report.outcome == Outcome::merged ? Qnil : Qfalse;
}

// The rate is rounded to a whole frame base: like Float#round, NaN and the infinities raise
// FloatDomainError.
void check_rate_is_finite(double rate) {
  if (std::isfinite(rate)) return;
  const char* name = std::isnan(rate) ? "NaN" : rate < 0 ? "-Infinity" : "Infinity";
  protect([&]() -> VALUE { rb_raise(rb_eFloatDomainError, "%s", name); });
}

VALUE frames(VALUE* argv) {
  const std::string timecode = string_of(protect([&] { return rb_string_value(&argv[0]); }));
  double rate = 0;
  protect([&] {
    rate = NUM2DBL(argv[1]);
    return Qnil;
  });
  check_rate_is_finite(rate);
  const std::string display_format = RB_TYPE_P(argv[2], T_STRING) ? string_of(argv[2]) : "";
  const std::int64_t count = to_frames(timecode, rate, display_format);
  return protect([&] { return LL2NUM(count); });
}

VALUE add_log_notes_method(int argc, VALUE* argv, VALUE self) {
  check_argument_count(argc);
  return guard([&] { return merge(self, argv); });
}

VALUE to_frames_method(int argc, VALUE* argv, VALUE) {
  check_argument_count(argc);
  return guard([&] { return frames(argv); });
}

}  // namespace

void define_methods() {
  protect([] {
    if (add_log_notes_defined) {
      rb_raise(rb_eTypeError, "def for \"%s\" can only be used once", "add_log_notes");
    }
    rb_define_private_method(rb_cObject, "add_log_notes", add_log_notes_method, -1);
    add_log_notes_defined = true;
    rb_define_private_method(rb_cObject, "to_frames", to_frames_method, -1);
    return Qnil;
  });
}

}  // namespace pellago::ruby
