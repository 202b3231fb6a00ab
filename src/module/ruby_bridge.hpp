#pragma once

// Keeps C++ exceptions and Ruby's non-local exits (raise, throw, break: longjmp in the
// interpreter) apart. Ruby API calls made while C++ objects are alive run under `protect`; a
// Ruby exit there becomes a C++ `RubyJump` that unwinds to the method's entry point, which runs
// its body under `guard`. Only once every C++ destructor has run does `guard` hand the exit back
// to Ruby, or raise the Ruby exception that stands for a C++ one.

#include <ruby.h>

#include <exception>
#include <string>
#include <type_traits>

namespace pellago::ruby {

// A Ruby non-local exit caught by rb_protect: `state` is the tag that rb_jump_tag resumes.
struct RubyJump {
  int state;
};

namespace detail {

template <class Call>
struct Protected {
  Call* call;
  VALUE result;
  std::exception_ptr error;
};

// Runs inside rb_protect. A Ruby exit from the call leaves through here by longjmp, so the call
// must keep only trivially destructible objects of its own.
template <class Call>
VALUE run_protected(VALUE data) {
  auto* frame = reinterpret_cast<Protected<Call>*>(data);
  try {
    frame->result = (*frame->call)();
  } catch (...) {
    frame->error = std::current_exception();
  }
  return Qnil;
}

}  // namespace detail

// Calls `call` (returning VALUE) under rb_protect. A Ruby exit throws RubyJump; a C++ exception
// thrown by the call is carried across Ruby's frames and thrown again here.
template <class Call>
VALUE protect(Call&& call) {
  using Plain = std::remove_reference_t<Call>;
  detail::Protected<Plain> frame{&call, Qnil, nullptr};
  int state = 0;
  rb_protect(detail::run_protected<Plain>, reinterpret_cast<VALUE>(&frame), &state);
  if (state != 0) throw RubyJump{state};
  if (frame.error) std::rethrow_exception(frame.error);
  return frame.result;
}

// What a guarded C++ body ended with: a result, a Ruby exit to resume, or a Ruby exception to
// raise. Trivially destructible, so Ruby may longjmp past it.
struct Ending {
  VALUE result = Qnil;
  int jump_state = 0;
  VALUE exception = Qnil;
  bool out_of_memory = false;
};

// The Ruby exception that stands for a C++ exception: pellago::Error with an errno as the
// matching SystemCallError (Errno::ENOENT...), std::bad_alloc as NoMemoryError, anything else
// as RuntimeError, each with the C++ message.
Ending ending_for(std::exception_ptr error) noexcept;

// Resumes the Ruby exit or raises the exception of `ending`, or returns its result.
VALUE finish(const Ending& ending);

template <class Body>
Ending run_guarded(Body& body) noexcept {
  try {
    return Ending{.result = body()};
  } catch (const RubyJump& jump) {
    return Ending{.jump_state = jump.state};
  } catch (...) {
    return ending_for(std::current_exception());
  }
}

// Runs `body` (returning VALUE) at a method's entry point. Nothing C++ is alive by the time Ruby
// gets control back, whether the body returned, threw, or a protected Ruby call exited.
template <class Body>
VALUE guard(Body&& body) {
  const Ending ending = run_guarded(body);
  return finish(ending);
}

// The bytes of a Ruby String.
std::string string_of(VALUE string);

// A new UTF-8 Ruby String; call it under protect.
VALUE utf8_string(const std::string& text);

}  // namespace pellago::ruby
