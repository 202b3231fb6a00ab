#include "module/ruby_bridge.hpp"

#include <new>
#include <stdexcept>

#include "error.hpp"

namespace pellago::ruby {

namespace {

VALUE exception_for(const Error& error) {
  VALUE message = utf8_string(error.what());
  if (error.system_error != 0) return rb_syserr_new_str(error.system_error, message);
  return rb_exc_new_str(rb_eRuntimeError, message);
}

// Makes the Ruby exception under protect, which can itself fail.
template <class Make>
Ending raising(Make make) noexcept {
  try {
    return Ending{.exception = protect(make)};
  } catch (const RubyJump& jump) {
    return Ending{.jump_state = jump.state};
  } catch (...) {
    return Ending{.out_of_memory = true};
  }
}

}  // namespace

Ending ending_for(std::exception_ptr error) noexcept {
  try {
    std::rethrow_exception(error);
  } catch (const Error& engine_error) {
    return raising([&] { return exception_for(engine_error); });
  } catch (const std::bad_alloc&) {
    return Ending{.out_of_memory = true};
  } catch (const std::exception& other) {
    return raising([&] { return rb_exc_new_cstr(rb_eRuntimeError, other.what()); });
  } catch (...) {
    return raising([] { return rb_exc_new_cstr(rb_eRuntimeError, "unknown C++ exception"); });
  }
}

VALUE finish(const Ending& ending) {
  if (ending.jump_state != 0) rb_jump_tag(ending.jump_state);
  if (ending.out_of_memory) rb_memerror();
  if (!NIL_P(ending.exception)) rb_exc_raise(ending.exception);
  return ending.result;
}

std::string string_of(VALUE string) {
  return std::string(RSTRING_PTR(string), static_cast<std::size_t>(RSTRING_LEN(string)));
}

VALUE utf8_string(const std::string& text) {
  return rb_utf8_str_new(text.data(), static_cast<long>(text.size()));
}

}  // namespace pellago::ruby
