#include "module/ruby_values.hpp"

#include <cmath>
#include <limits>
#include <optional>

#include "module/ruby_bridge.hpp"

namespace pellago::ruby {

namespace {

VALUE symbol(const char* name) { return ID2SYM(rb_intern(name)); }

VALUE number_value(double number) {
  if (std::trunc(number) == number) return LL2NUM(static_cast<long long>(number));
  return DBL2NUM(number);
}

std::optional<int> whole_number(VALUE number) {
  double value = 0;
  if (FIXNUM_P(number)) {
    value = static_cast<double>(FIX2LONG(number));
  } else if (RB_FLOAT_TYPE_P(number)) {
    value = RFLOAT_VALUE(number);
  } else {
    return std::nullopt;
  }
  if (std::trunc(value) != value || value < std::numeric_limits<int>::min() ||
      value > std::numeric_limits<int>::max()) {
    return std::nullopt;
  }
  return static_cast<int>(value);
}

std::optional<FrameRate> frame_rate_of(VALUE entry) {
  VALUE type = Qnil, timebase = Qnil, ntsc = Qnil, fcp_rate = Qnil;
  protect([&] {
    const ID fetch = rb_intern("[]");
    type = rb_funcall(entry, fetch, 1, symbol("type"));
    timebase = rb_funcall(entry, fetch, 1, symbol("timebase"));
    ntsc = rb_funcall(entry, fetch, 1, symbol("ntsc"));
    fcp_rate = rb_funcall(entry, fetch, 1, symbol("fcp_rate"));
    return Qnil;
  });
  const std::optional<int> base = whole_number(timebase);
  if (!base || !RB_TYPE_P(ntsc, T_STRING)) return std::nullopt;
  double rate = 0;
  protect([&] {
    rate = NUM2DBL(fcp_rate);
    return Qnil;
  });
  return FrameRate{RB_TYPE_P(type, T_STRING) ? string_of(type) : std::string(), *base,
                   string_of(ntsc), rate};
}

// A Date, a DateTime (UTC) or, for a time of day, the Integer count of seconds since midnight.
// The 1900 date system's 1900-02-29, which no calendar has, stays its text.
VALUE date_value(const DateTime& date) {
  if (date.kind == DateKind::time)
    return INT2NUM(date.hour * 3600 + date.minute * 60 + date.second);
  if (date.year == 1900 && date.month == 2 && date.day == 29) {
    return utf8_string(date_time_text(date));
  }
  rb_require("date");
  if (date.kind == DateKind::date) {
    return rb_funcall(rb_path2class("Date"), rb_intern("new"), 3, INT2NUM(date.year),
                      INT2NUM(date.month), INT2NUM(date.day));
  }
  return rb_funcall(rb_path2class("DateTime"), rb_intern("new"), 6, INT2NUM(date.year),
                    INT2NUM(date.month), INT2NUM(date.day), INT2NUM(date.hour),
                    INT2NUM(date.minute), INT2NUM(date.second));
}

}  // namespace

VALUE frame_rates_value(const FrameRates& rates) {
  VALUE list = rb_ary_new_capa(static_cast<long>(rates.size()));
  for (const FrameRate& rate : rates) {
    VALUE entry = rb_hash_new();
    rb_hash_aset(entry, symbol("type"), utf8_string(rate.type));
    rb_hash_aset(entry, symbol("timebase"), INT2NUM(rate.timebase));
    rb_hash_aset(entry, symbol("ntsc"), utf8_string(rate.ntsc));
    rb_hash_aset(entry, symbol("fcp_rate"), number_value(rate.fcp_rate));
    rb_ary_push(list, entry);
  }
  return list;
}

const FrameRates& read_frame_rates(FrameRates& table) {
  VALUE list = protect([] {
    VALUE constant = rb_const_get(rb_cObject, rb_intern("FRAME_RATES"));
    return rb_convert_type(constant, T_ARRAY, "Array", "to_ary");
  });
  table.clear();
  for (long i = 0; i < RARRAY_LEN(list); ++i) {
    if (std::optional<FrameRate> rate = frame_rate_of(rb_ary_entry(list, i))) {
      table.push_back(std::move(*rate));
    }
  }
  RB_GC_GUARD(list);
  return table;
}

VALUE cell_value(const Cell& cell) {
  if (const auto* number = std::get_if<double>(&cell)) return DBL2NUM(*number);
  if (const auto* text = std::get_if<std::string>(&cell)) return utf8_string(*text);
  if (const auto* truth = std::get_if<bool>(&cell)) return *truth ? Qtrue : Qfalse;
  if (const auto* date = std::get_if<DateTime>(&cell)) return date_value(*date);
  return Qnil;
}

}  // namespace pellago::ruby
