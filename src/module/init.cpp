// The entry Ruby runs when the feature Pellago_algorithm is required.
//
// This build reads workbooks and drives libxml2 itself, so it loads no Ruby libraries (jcode,
// rubygems, nokogiri, roo, osx/cocoa), and finds the user's Library folder on its own. $KCODE is
// left alone: Ruby 3 ignores it (assigning it only warns) and takes strings as UTF-8 already,
// which is what setting it to "u" was for.

#include <ruby.h>

#include <optional>
#include <string>

#include "module/library_directory.hpp"
#include "module/methods.hpp"
#include "module/ruby_bridge.hpp"
#include "module/ruby_values.hpp"
#include "timecode/frame_rate.hpp"
#include "version.hpp"

namespace pellago::ruby {

namespace {

// `$orvale == true`, with Ruby's ==.
bool orvale_is_true() {
  return RTEST(protect([] { return rb_funcall(rb_gv_get("$orvale"), rb_intern("=="), 1, Qtrue); }));
}

// Makes "Application Support/Tarnwick" in the user's Library when it is not a folder yet (one
// mkdir, whose failure ends the load) and names Pellago.xml inside it TEMP_XML_FILE. Without a
// Library folder there is nothing to do.
void set_up_maker_folder() {
  const std::optional<std::string> library = user_library_directory();
  if (!library) return;
  const std::string folder = *library + "/Application Support/Tarnwick";
  const std::string temp_xml_file = folder + "/Pellago.xml";
  protect([&] {
    VALUE path = utf8_string(folder);
    if (!RTEST(rb_funcall(rb_cFile, rb_intern("directory?"), 1, path))) {
      rb_funcall(rb_cDir, rb_intern("mkdir"), 1, path);
    }
    rb_define_global_const("TEMP_XML_FILE", utf8_string(temp_xml_file));
    return Qnil;
  });
}

void load_module() {
  protect([] {
    rb_define_global_const("I_KNOW_I_AM_USING_AN_OLD_AND_BUGGY_VERSION_OF_LIBXML2", Qtrue);
    rb_define_global_const("PELLAGO_VERSION", utf8_string(kVersion));
    return Qnil;
  });
  // A host that sets $orvale to true brings its own FRAME_RATES and needs no files from us.
  if (!orvale_is_true()) {
    protect([] {
      rb_define_global_const("FRAME_RATES", frame_rates_value(FRAME_RATES));
      return Qnil;
    });
    set_up_maker_folder();
  }
  define_methods();
}

}  // namespace

}  // namespace pellago::ruby

extern "C" __attribute__((visibility("default"))) void Init_Pellago_algorithm() {
  pellago::ruby::guard([] {
    pellago::ruby::load_module();
    return Qnil;
  });
}
