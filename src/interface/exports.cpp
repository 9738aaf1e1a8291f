// The 27 exported calls: a gate, the work, and a buffer for the host.
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <string_view>

#include "core/results.h"
#include "interface/instances.h"
#include "quor_parser.h"

namespace {

using quor::ScriptParser;

/// Runs `work` on the instance of a handle, with its lock held. Gives `gate_result` for a bad
/// handle and for an exception, which never leaves a call.
template <typename Result, typename Work>
Result enter(int64_t handle, Result gate_result, const Work& work) noexcept {
  try {
    const auto instance = quor::find_instance(handle);
    if (instance == nullptr) return gate_result;
    const quor::Entrance entrance(*instance);
    return entrance ? work(instance->parser) : gate_result;
  } catch (...) {
    return gate_result;
  }
}

template <typename Work>
void enter(int64_t handle, const Work& work) noexcept {
  enter(handle, 0, [&work](ScriptParser& parser) {
    work(parser);
    return 0;
  });
}

void write_length(uint32_t* length, size_t value) {
  if (length != nullptr) *length = static_cast<uint32_t>(value);
}

/// A buffer for the host; throws if there is no memory or the length doesn't fit.
char* to_buffer(const std::string& text, uint32_t* length) {
  if (text.size() > std::numeric_limits<uint32_t>::max()) throw std::bad_alloc();
  auto* buffer = static_cast<char*>(std::malloc(text.size() + 1));
  if (buffer == nullptr) throw std::bad_alloc();
  std::memcpy(buffer, text.c_str(), text.size() + 1);
  write_length(length, text.size());
  return buffer;
}

/// A call that returns text; a bad handle gives null with length 0.
template <typename Work>
char* enter_for_text(int64_t handle, uint32_t* length, const Work& work) noexcept {
  char* buffer = enter(handle, static_cast<char*>(nullptr),
                       [&](ScriptParser& parser) { return to_buffer(work(parser), length); });
  if (buffer == nullptr) write_length(length, 0);
  return buffer;
}

/// Whether a handle names an instance; waits for no call that works on it.
bool is_live(int64_t handle) noexcept {
  try {
    return quor::find_instance(handle) != nullptr;
  } catch (...) {
    return false;
  }
}

}  // namespace

extern "C" {

int64_t create_instance() {
  try {
    return quor::add_instance();
  } catch (...) {
    return 0;
  }
}

void delete_instance(int64_t handle) {
  try {
    quor::remove_instance(handle);
  } catch (...) {
    // A lock that can't be had leaves the instance as it is.
  }
}

void create_reserved_field(int64_t handle, const char* name, uint32_t column_id,
                           uint32_t name_length) {
  if (name == nullptr) return;
  enter(handle, [&](ScriptParser& parser) {
    parser.create_reserved_field({name, name_length}, column_id);
  });
}

void set_indicator_extra_info(int64_t handle, uint32_t period_code, const char* security,
                              const char* market, const char* text, const char* time_zone,
                              uint32_t security_length, uint32_t market_length, uint32_t,
                              uint32_t time_zone_length) {
  if (security == nullptr || market == nullptr || text == nullptr || time_zone == nullptr) return;
  enter(handle, [&](ScriptParser& parser) {
    parser.pool().set_extra_info(static_cast<int32_t>(period_code), {security, security_length},
                                 {market, market_length}, {time_zone, time_zone_length});
  });
}

void set_parser_instance_uuid(int64_t handle, uint64_t uuid) {
  enter(handle, [&](ScriptParser& parser) { parser.set_uuid(uuid); });
}

void set_get_extra_data_callback(int64_t handle, quor_extra_data_callback callback) {
  enter(handle, [&](ScriptParser& parser) { parser.pool().extra_data_callback = callback; });
}

void set_get_trade_time_callback(int64_t handle, quor_trade_time_callback callback) {
  enter(handle, [&](ScriptParser& parser) { parser.pool().trade_time_callback = callback; });
}

void set_logger_handler(quor_log_handler handler, uint8_t minimum_level) {
  quor::set_log_handler(handler, minimum_level);
}

void set_parser_notice_callback_handler(quor_notice_handler handler) {
  quor::set_notice_handler(handler);
}

void set_trade_callback(quor_trade_handler handler) { quor::set_trade_handler(handler); }

void set_get_trade_dates_callback(quor_trade_dates_handler handler) {
  quor::set_trade_dates_handler(handler);
}

char* get_pre_parse_res(int64_t handle, const char* script, const char* parameters,
                        const char* lines, uint32_t script_length, uint32_t parameters_length,
                        uint32_t lines_length, uint32_t* length) {
  if (script == nullptr || parameters == nullptr || lines == nullptr) {
    if (!is_live(handle)) write_length(length, 0);
    return nullptr;
  }
  return enter_for_text(handle, length, [&](ScriptParser& parser) {
    return parser.pre_parse({script, script_length}, {parameters, parameters_length},
                            {lines, lines_length});
  });
}

void set_row_data(int64_t handle, const char* json, uint32_t json_length) {
  if (json == nullptr) return;
  enter(handle, [&](ScriptParser& parser) { parser.add_row({json, json_length}); });
}

void set_column_data(int64_t handle, uint64_t row_key, uint32_t column_id, double value) {
  enter(handle, [&](ScriptParser& parser) {
    parser.pool().table().put_value(static_cast<int64_t>(row_key), column_id, value);
  });
}

void clear_data(int64_t handle) {
  enter(handle, [](ScriptParser& parser) { parser.pool().table().clear_rows(); });
}

char* exec_parser_cal(int64_t handle, uint32_t first_row, uint8_t fire_signals, uint32_t* length) {
  return enter(handle, static_cast<char*>(nullptr), [&](ScriptParser& parser) {
    return to_buffer(parser.exec(static_cast<int32_t>(first_row), fire_signals != 0), length);
  });
}

uint32_t get_row_num(int64_t handle) {
  return enter(handle, 0U, [](ScriptParser& parser) {
    return static_cast<uint32_t>(parser.pool().table().row_count());
  });
}

uint32_t get_column_num(int64_t handle) {
  return enter(handle, 0U,
               [](ScriptParser& parser) { return parser.pool().table().column_count(); });
}

uint32_t get_current_row_index(int64_t handle, uint64_t row_key) {
  return enter(handle, std::numeric_limits<uint32_t>::max(), [&](ScriptParser& parser) {
    return parser.pool().table().row_index_of(static_cast<int64_t>(row_key));
  });
}

char* get_data_arr(int64_t handle, uint32_t column_id, uint32_t last_row, int32_t count,
                   uint32_t* length) {
  return enter_for_text(handle, length, [&](ScriptParser& parser) {
    return parser.data_text(column_id, last_row, count);
  });
}

double get_data_by_col_row(int64_t handle, int32_t row, uint32_t column_id) {
  return enter(handle, quor::null_value,
               [&](ScriptParser& parser) { return parser.cell_value(row, column_id); });
}

double get_field_val_by_index(int64_t handle, int32_t field_id, int32_t row) {
  return enter(handle, quor::null_value,
               [&](ScriptParser& parser) { return parser.field_value(field_id, row); });
}

int32_t get_field_id_by_param_name(int64_t handle, const char* name, uint32_t name_length) {
  if (name == nullptr) return -1;
  return enter(handle, -1, [&](ScriptParser& parser) {
    return quor::field_id_of_name(parser.pool(), {name, name_length});
  });
}

char* get_invoke_functions(int64_t handle, uint32_t* length) {
  return enter_for_text(handle, length,
                        [](ScriptParser& parser) { return parser.invoked_functions(); });
}

char* get_parser_variable_fields(int64_t handle, uint32_t* length) {
  return enter_for_text(handle, length,
                        [](ScriptParser& parser) { return parser.variable_fields(); });
}

char* get_shapes(int64_t handle, uint32_t* length) {
  return enter_for_text(handle, length, [](ScriptParser& parser) { return parser.shapes(); });
}

void release_ptr_val(char* buffer) { std::free(buffer); }

}  // extern "C"
