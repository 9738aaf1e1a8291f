#include "task.h"

#include "../text.h"
#include "refusal.h"

namespace quor_host {

Task task_of(const Json& request) {
  Task task{text_of(request, "script"), {}};
  if (task.script.size() > longest_script) {
    throw Refusal(413,
                  "the script is longer than " + std::to_string(longest_script >> 10U) + " KiB");
  }
  const auto parameters = request.find("parameters");
  if (parameters == request.end() || parameters->is_null()) return task;
  if (!parameters->is_array()) throw Refusal(400, "\"parameters\" must be a list");
  for (const Json& parameter : *parameters) {
    if (!parameter.is_object()) throw Refusal(400, "a parameter must be an object");
    const auto value = number_of(parameter, "value");
    if (!value) throw Refusal(400, "a parameter must have a \"value\"");
    task.parameters.emplace_back(to_upper(text_of(parameter, "name")), *value);
  }
  return task;
}

}  // namespace quor_host
