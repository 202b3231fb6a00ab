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

// The host's progress bar, driven with the calls its callers expect: set up as the clips begin,
// then one step per clip visited, each followed by a redraw of the view. The other phases have no
// bar.
void show_on_progress_bar(VALUE receiver, const ProgressReport& report) {
  if (report.phase != MergePhase::merging_clips) return;
  constexpr const char* indicator = "@progressIndicator";
  if (report.done == 0) {
    tell(receiver, indicator, "setIndeterminate", false);
    tell(receiver, indicator, "setDoubleValue", std::int64_t{0});
    tell(receiver, indicator, "setMaxValue", report.total);
  } else {
    tell(receiver, indicator, "incrementBy", std::int64_t{1});
  }
  tell(receiver, "@progressView", "displayIfNeeded");
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
  if (report_progress) {
    host.progress = [=](const ProgressReport& report) { show_on_progress_bar(receiver, report); };
  }
  host.frame_rates = [&frame_rates]() -> const FrameRates& {
    return read_frame_rates(frame_rates);
  };
  return host;
}

}  // namespace pellago::ruby
