// The module of WebAssembly of the page: one desk, and one export by which it is asked.
#include <new>
#include <string>

#include "bars/errors.h"
#include "calls.h"
#include "host/studio/refusal.h"

namespace quor_host {
namespace {

Desk desk;
std::string answer;

template <typename Work>
int guarded(const Work& work) noexcept {
  try {
    work();
    return 0;
  } catch (const Refusal& refusal) {
    answer = refusal.what();
    return refusal.status;
  } catch (const quor_bars::ReadError& error) {
    answer = error.what();
    return 400;
  } catch (const std::bad_alloc&) {
    answer = "there is no memory for this";
    return 507;
  } catch (const std::exception& error) {
    answer = error.what();
    return 500;
  }
}

}  // namespace
}  // namespace quor_host

#define STUDIO_EXPORT(name) extern "C" __attribute__((export_name(#name)))

STUDIO_EXPORT(studio_answer) const char* studio_answer() { return quor_host::answer.data(); }
STUDIO_EXPORT(studio_answer_length) size_t studio_answer_length() {
  return quor_host::answer.size();
}

/// Answers a call in JSON, with a body beside it. The answer, or what it is refused for, stands at
/// `studio_answer` until the next call. Gives 0, or a status of HTTP for what is refused.
STUDIO_EXPORT(studio_call)
int studio_call(const char* call, size_t length, const char* body, size_t body_length) {
  return quor_host::guarded([&] {
    quor_host::answer = quor_host::answer_to(
        quor_host::desk, quor_host::json_object_of({call, length}), {body, body_length});
  });
}
