#include "module/ruby_host.hpp"

#include <cstdint>
#include <variant>

#include "module/ruby_bridge.hpp"
#include "module/ruby_values.hpp"

namespace pellago::ruby {

namespace {

using Argument = std::variant<std::monostate, bool, std::int64_t>;

// `@variable.method(argument)` on the receiver, as Ruby code would write it.
void tell(VALUE receiver, const char* variable, const char* method, Argument argument = {}) {
  protect([&] {
    VALUE target = rb_ivar_get(receiver, rb_intern(variable));
    const ID name = rb_intern(method);
    if (const auto* flag = std::get_if<bool>(&argument)) {
      VALUE value = *flag ? Qtrue : Qfalse;
      return rb_funcallv_public(target, name, 1, &value);
    }
    if (const auto* number = std::get_if<std::int64_t>(&argument)) {
      VALUE value = LL2NUM(*number);
      return rb_funcallv_public(target, name, 1, &value);
    }
    return rb_funcallv_public(target, name, 0, nullptr);
  });
}

Progress progress_of(VALUE receiver) {
  constexpr const char* indicator = "@progressIndicator";
  return Progress{
      .set_indeterminate = [=](bool on) { tell(receiver, indicator, "setIndeterminate", on); },
      .set_double_value =
          [=](std::int64_t value) { tell(receiver, indicator, "setDoubleValue", value); },
      .set_max_value = [=](std::int64_t value) { tell(receiver, indicator, "setMaxValue", value); },
      .increment_by = [=](std::int64_t step) { tell(receiver, indicator, "incrementBy", step); },
      .display_if_needed = [=] { tell(receiver, "@progressView", "displayIfNeeded"); },
  };
}

void set_column_headers(VALUE receiver, const std::vector<Cell>& cells) {
  protect([&] {
    VALUE headers = rb_ary_new_capa(static_cast<long>(cells.size()));
    for (const Cell& cell : cells) rb_ary_push(headers, cell_value(cell));
    return rb_ivar_set(receiver, rb_intern("@column_headers"), headers);
  });
}

}  // namespace

Host host_for(VALUE receiver, bool report_progress, FrameRates& frame_rates) {
  Host host;
  host.set_column_headers = [=](const std::vector<Cell>& cells) {
    set_column_headers(receiver, cells);
  };
  if (report_progress) host.progress = progress_of(receiver);
  host.frame_rates = [&frame_rates]() -> const FrameRates& {
    return read_frame_rates(frame_rates);
  };
  return host;
}

}  // namespace pellago::ruby
