// A sequence of calls on a few instances, as the bytes of the input decide: in any order, with dead
// handles, and with callbacks that call back in. A shadow of the rows says what must be there.
#include <array>
#include <iterator>
#include <limits>
#include <set>
#include <string>

#include "fuzz_host.h"

using namespace quor_fuzz;

namespace {

constexpr size_t most_rows = 64;

constexpr std::string_view scripts[] = {
    "",
    "A:C;",
    "MA3:MA(C,3),COLORRED;D:=REF(C,1);E:D+MA3;",
    "A:EMA(C,3);B:SMA(A,3,1);X:HHV(B,4)-LLV(B,4);",
    "CROSS(C,O),NOTICE('up');C>O,BK(2);C<O,SP;",
    "A:BACKSET(C>O,2);B:FILTER(C>O,2);ZIGZAG(C,1,0);",
    "DRAWTEXT(C>O,H,'text');STICKLINE(C>O,C,O,2,0);",
    "A:BARPOS;B:DATE;C1:TIME;D:BARSLAST(C>O);",
    "A:\"600000$C\";B:GETPRICE(600000,NEW);",
    "A:SAR(4,0.02,0.2);B:WINNER(C);K:COST(50);",
    "A:UNIT*MINPRICE;B:SETTLE+AVPRICE;C1:FIELDX;",
    "A:=1;B:SUM(V,0);X:COUNT(C>O,A);Y:IF(X>1,B,A);",
    "A:(((;",
    "A:NOSUCH;",
};

struct Slot {
  int64_t handle = 0;
  std::set<int64_t> keys;
  bool runnable = true;
};

struct World {
  std::array<Slot, 3> slots;
  size_t working = 0;  ///< the slot on which a call works
  size_t in_callback = 0;
};
World* world = nullptr;

/// What a callback may do while its instance works.
void call_back_in() {
  if (world == nullptr) return;
  const Slot& working = world->slots[world->working];
  switch (world->in_callback) {
    case 1:
      expect(get_row_num(working.handle) == 0, "a closed door to a callback's own instance");
      clear_data(working.handle);
      delete_instance(working.handle);
      break;
    case 2: {
      Slot& other = world->slots[(world->working + 1) % world->slots.size()];
      expect(get_row_num(other.handle) == other.keys.size(), "the rows of another instance");
      break;
    }
    case 3: {
      Slot& other = world->slots[(world->working + 1) % world->slots.size()];
      delete_instance(other.handle);
      other = {};
      break;
    }
    default:
      break;
  }
}

void hear_log(uint8_t, const char*, uint64_t) { call_back_in(); }
void hear_notice(int64_t, uint32_t, uint64_t, const char*) { call_back_in(); }
void hear_signal(int64_t, int64_t, uint32_t, uint64_t, uint32_t, uint32_t, int64_t) {
  call_back_in();
}
double give_constant(const char*, const char*, const char*) {
  call_back_in();
  return 2.0;
}
int32_t give_trading(int64_t, const char*, const char*) {
  call_back_in();
  return 1;
}
const char* give_dates(const char*, const char*, const char*, const char*, int32_t*) {
  call_back_in();
  return R"({"status_code":0,"data":{"timezone":"UTC+08:00","trade_dates":["20240103","20240102"],)"
         R"("daylight_save_times":[],"trade_times":[],"special_trade_times":[]}})";
}

int64_t key_of(size_t number) { return 20240101000000 + static_cast<int64_t>(number); }

void make(Slot& slot, Bytes&) {
  if (slot.handle != 0) return;
  slot.handle = create_instance();
  expect(slot.handle != 0, "a handle");
}

void end(Slot& slot, Bytes&) {
  delete_instance(slot.handle);
  expect(get_row_num(slot.handle) == 0, "no rows behind a dead handle");
  slot = {};
}

void compile(Slot& slot, Bytes& bytes) {
  const size_t choice = bytes.below(std::size(scripts) + 1);
  const std::string_view script = choice < std::size(scripts) ? scripts[choice] : bytes.text();
  const char* text = script.empty() ? "" : script.data();
  uint32_t length = 0;
  char* report = get_pre_parse_res(slot.handle, text, "", "", static_cast<uint32_t>(script.size()),
                                   0, 0, &length);
  expect((report != nullptr) == (slot.handle != 0), "a report from a live instance only");
  take_text(report, length);
  if (slot.handle == 0 || script.empty()) return;
  slot.keys.clear();
  slot.runnable = bearable_bars(script) >= 16;
}

void feed(Slot& slot, Bytes& bytes) {
  std::string json = "[";
  for (size_t count = bytes.below(12); count > 0; --count) {
    const int64_t key = key_of(bytes.below(most_rows));
    if (json.size() > 1) json += ',';
    json += "{\"11\":" + std::to_string(bytes.byte()) + ",\"7\":" + std::to_string(bytes.byte()) +
            ",\"8\":99,\"9\":1,\"13\":5,\"1\":" + std::to_string(key) + "}";
    if (slot.handle != 0) slot.keys.insert(key);
  }
  json += "]";
  set_row_data(slot.handle, json.data(), static_cast<uint32_t>(json.size()));
}

void put(Slot& slot, Bytes& bytes) {
  static constexpr uint32_t columns[] = {1, 7, 11, 13, 20000, 20001, 20003, 99, 0xFFFFFFFF};
  const int64_t key = bytes.below(8) == 0 ? 0 : key_of(bytes.below(most_rows));
  const uint32_t column = columns[bytes.below(std::size(columns))];
  set_column_data(slot.handle, static_cast<uint64_t>(key), column, bytes.number());
  if (slot.handle != 0 && key > 0) slot.keys.insert(key);
}

void run(Slot& slot, Bytes& bytes) {
  const uint32_t first = bytes.below(8) == 0 ? bytes.word() : bytes.byte() % 80U;
  if (!slot.runnable) return;
  uint32_t length = 0;
  char* answer = exec_parser_cal(slot.handle, first, bytes.byte() & 1, &length);
  expect((answer != nullptr) == (slot.handle != 0), "an answer from a live instance only");
  take_text(answer, length);
}

void read(Slot& slot, Bytes& bytes) {
  const uint32_t column = 19999U + static_cast<uint32_t>(bytes.below(12));
  const auto row = static_cast<int32_t>(bytes.below(8) == 0 ? bytes.word() : bytes.byte());
  static constexpr int32_t counts[] = {0, 1, 5, 100, -1, -2, std::numeric_limits<int32_t>::min()};
  const int32_t count = counts[bytes.below(std::size(counts))];
  const int32_t bounded_row = count < -2 ? row % 1000 : row;
  uint32_t length = 7;
  char* text =
      get_data_arr(slot.handle, column, static_cast<uint32_t>(bounded_row), count, &length);
  expect(text != nullptr || length == 0, "the length beside a null");
  take_text(text, length);
  get_data_by_col_row(slot.handle, row, column);
  if (slot.runnable) get_field_val_by_index(slot.handle, ~static_cast<int32_t>(column % 64), row);
  get_field_id_by_param_name(slot.handle, "A", 1);
}

void read_lists(Slot& slot, Bytes&) {
  for (const auto list : {get_shapes, get_invoke_functions, get_parser_variable_fields}) {
    uint32_t length = 7;
    char* text = list(slot.handle, &length);
    expect((text != nullptr) == (slot.handle != 0), "a list from a live instance only");
    take_text(text, length);
  }
}

void clear(Slot& slot, Bytes&) {
  clear_data(slot.handle);
  slot.keys.clear();
}

void set_info(Slot& slot, Bytes& bytes) {
  const Surroundings info = surroundings(bytes.byte());
  const std::string_view zone = bytes.text();
  set_indicator_extra_info(
      slot.handle, info.period, info.security.data(), info.market.data(), "",
      zone.empty() ? "" : zone.data(), static_cast<uint32_t>(info.security.size()),
      static_cast<uint32_t>(info.market.size()), 0, static_cast<uint32_t>(zone.size()));
}

void set_callbacks(Slot& slot, Bytes& bytes) {
  const uint8_t choice = bytes.byte();
  set_get_extra_data_callback(slot.handle, (choice & 1) != 0 ? give_constant : nullptr);
  set_get_trade_time_callback(slot.handle, (choice & 2) != 0 ? give_trading : nullptr);
  set_parser_instance_uuid(slot.handle, choice);
  world->in_callback = choice / 4 % 4;
}

/// Words stay in the process, so there are but a few.
void declare(Slot& slot, Bytes& bytes) {
  static constexpr std::string_view names[] = {"FIELDX", "FIELDY", "C", "", "A"};
  const std::string_view name = names[bytes.below(std::size(names) - 1)];
  create_reserved_field(slot.handle, name.data(), 900U + bytes.byte() % 4U,
                        static_cast<uint32_t>(name.size()));
}

constexpr void (*operations[])(Slot& slot, Bytes& bytes) = {
    make, end,        compile, feed,     feed,          put,     run, run,
    read, read_lists, clear,   set_info, set_callbacks, declare, feed};

void expect_rows(const Slot& slot) {
  expect(get_row_num(slot.handle) == slot.keys.size(), "the count of rows");
  if (slot.keys.empty()) return;
  expect(get_current_row_index(slot.handle, static_cast<uint64_t>(*slot.keys.begin())) == 0,
         "the place of the first key");
  expect(get_current_row_index(slot.handle, static_cast<uint64_t>(*slot.keys.rbegin())) ==
             slot.keys.size() - 1,
         "the place of the last key");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  set_logger_handler(hear_log, 0);
  set_parser_notice_callback_handler(hear_notice);
  set_trade_callback(hear_signal);
  set_get_trade_dates_callback(give_dates);
  World all;
  world = &all;
  Bytes bytes({reinterpret_cast<const char*>(data), size});
  while (!bytes.empty()) {
    all.working = bytes.below(all.slots.size());
    operations[bytes.below(std::size(operations))](all.slots[all.working], bytes);
    for (const Slot& slot : all.slots) expect_rows(slot);
  }
  for (const Slot& slot : all.slots) delete_instance(slot.handle);
  world = nullptr;
  return 0;
}
