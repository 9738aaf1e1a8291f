/* quor_parser.h - compiles and runs technical-indicator scripts for a charting client.
 *
 * An instance is one script over the bars of one security. The host drives it through the calls
 * below and hears from it through callbacks; the library has no thread, no file and no data of its
 * own.
 *
 * Order of calls
 *   1. create_instance
 *   2. setters: uuid, callbacks, security and period, further fields
 *   3. get_pre_parse_res: compiles. The report says which fields, look-back, securities and periods
 *      the script needs. A non-empty script drops all rows and results of the one before.
 *   4. set_row_data, set_column_data: the bars
 *   5. exec_parser_cal with first row 0
 *   6. the reading calls
 *   7. for a new or changed bar: set_row_data or set_column_data, exec_parser_cal with the first
 * row from which values may differ, reading again. clear_data starts the rows over.
 *   8. delete_instance
 *
 * Text
 *   Every text that goes in is a pointer and a separate length in bytes; no terminator is needed,
 * the bytes are copied, UTF-8 is expected. Every text that comes out is a fresh buffer with a
 * terminating zero; the length that is written excludes it. The buffer belongs to the host, which
 * gives it back through release_ptr_val and no other way. A null pointer for an out-length writes
 * no length.
 *
 * Bad calls
 *   A handle that is 0, unknown or deleted gives the result named as "bad handle" below, without
 * any message. So does a null text pointer, unless the call says otherwise. Handles are never
 * reused. No exception leaves a call: when memory runs out, create_instance gives 0 and every other
 * call its bad-handle result.
 *
 * Threads
 *   Any thread may make any call at any time. Calls on one instance run one after the other,
 * reading calls included; calls on different instances run side by side. A callback runs on the
 * thread of the call that raised it, while that instance is locked: it must not call back into the
 * same instance (such a call gives its bad-handle result), any other instance is free.
 *
 * Numbers
 *   A row is an index, 0 the oldest bar; indexes move when a bar is inserted before others. A row
 * key is a positive date-time written as an integer, YYYYMMDDhhmmss. A column id is the host's id
 * of a field or the id of a column of the script; 1 is the column of row keys. Columns of a script
 * count from 20000 up; a few fields have greater ids. A null value is any NaN, whatever its bits.
 */
#ifndef QUOR_PARSER_H
#define QUOR_PARSER_H

#include <stdint.h>

#if defined(_WIN32)
#if defined(QUOR_BUILDING)
#define QUOR_API __declspec(dllexport)
#else
#define QUOR_API __declspec(dllimport)
#endif
#else
#define QUOR_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Callbacks. Texts are zero-terminated UTF-8 and valid only during the call. ---- */

/* Log line. Levels: 0 a bar's time couldn't be mapped, 1 calendar intake, 2 errors, 3 unknown
 * errors. `uuid` is the instance's tag, 0 where no instance is at hand. */
typedef void (*quor_log_handler)(uint8_t level, const char* text, uint64_t uuid);

/* Notice. `time` is the wall clock in seconds since 1970, `column_id` the column that records the
 * notice's condition, `text` the cells of the bar as a JSON object from column id to number or
 * null. */
typedef void (*quor_notice_handler)(int64_t time, uint32_t column_id, uint64_t uuid,
                                    const char* text);

/* Trade signal. `time` is the wall clock in seconds since 1970, `bar` the row key, `action` 0 BK, 1
 * BP, 2 SK, 3 SP, 4 BPK, 5 SPK, 6 CLOSEOUT, `quantity` -1 if the script gives none. */
typedef void (*quor_trade_handler)(int64_t time, int64_t bar, uint32_t row, uint64_t uuid,
                                   uint32_t column_id, uint32_t action, int64_t quantity);

/* Trading calendar of a security, for dates from `start_date` to `end_date`, both YYYYMMDD. Returns
 * zero-terminated JSON, or null or an empty text for no calendar. The buffer stays the host's and
 * must live until the call returns to the library; it is copied at once. `length` points to 0 and
 * is ignored. */
typedef const char* (*quor_trade_dates_handler)(const char* market, const char* security,
                                                const char* start_date, const char* end_date,
                                                int32_t* length);

/* Market constant: `key` is "MINPRICE", "UNIT" or "SHARECOUNTPERUNIT". Returns a NaN while the host
 * has no value. All three are asked for together, and again at the next bar as long as MINPRICE is
 * a NaN, else not before another security is set. */
typedef double (*quor_extra_data_callback)(const char* key, const char* market,
                                           const char* security);

/* Whether the security trades at `time`, seconds since 1970: non-zero means yes. */
typedef int32_t (*quor_trade_time_callback)(int64_t time, const char* market, const char* security);

/* ---- Life ---- */

/* Makes an instance for day bars without security, market and time zone. Returns its handle, never
 * 0 while memory lasts. */
QUOR_API int64_t create_instance(void);

/* Ends an instance. Waits for a call that works on it; once this returns, no callback of the
 * instance fires any more and the handle is dead. A dead or zero handle does nothing. */
QUOR_API void delete_instance(int64_t handle);

/* ---- Setup of one instance. Bad handle: nothing happens. ---- */

/* Declares `name` (as scripts write it, in capitals) as a bar field that rows carry under
 * `column_id`. The word becomes known to the whole process: later instances have it, too. A word
 * that is known keeps its id there, while this instance gets a variable and a column on the given
 * id, beside the word's own. A null name does nothing. */
QUOR_API void create_reserved_field(int64_t handle, const char* name, uint32_t column_id,
                                    uint32_t name_length);

/* Says what the instance is about: the host's period code (0x4000 one day, 0x3005 five minutes,
 * ...), security, market, a text without use, and a time zone of the form "UTC+08:00", which
 * nothing reads at present: the zone of a market comes with its calendar. Any null pointer does
 * nothing. */
QUOR_API void set_indicator_extra_info(int64_t handle, uint32_t period_code, const char* security,
                                       const char* market, const char* text, const char* time_zone,
                                       uint32_t security_length, uint32_t market_length,
                                       uint32_t text_length, uint32_t time_zone_length);

/* The host's tag for the instance, handed back in log lines, notices and signals. All-ones until
 * set. */
QUOR_API void set_parser_instance_uuid(int64_t handle, uint64_t uuid);

/* The instance's sources of market constants and trading time. Null clears the slot. */
QUOR_API void set_get_extra_data_callback(int64_t handle, quor_extra_data_callback callback);
QUOR_API void set_get_trade_time_callback(int64_t handle, quor_trade_time_callback callback);

/* ---- Setup of the process. Null never empties a slot. ---- */

/* Sets the log handler and the lowest level it hears, 2 at load. Null changes nothing. */
QUOR_API void set_logger_handler(quor_log_handler handler, uint8_t minimum_level);

/* Sets who hears notices, trade signals, and who answers for calendars. A null for one of the last
 * two is logged at level 2. */
QUOR_API void set_parser_notice_callback_handler(quor_notice_handler handler);
QUOR_API void set_trade_callback(quor_trade_handler handler);
QUOR_API void set_get_trade_dates_callback(quor_trade_dates_handler handler);

/* ---- Compile ---- */

/* Compiles a script with two JSON texts: `parameters`, an array of objects with PARAM_NAME (text)
 * and DEFAULT (number), and `lines`, an array of objects with LINE_NAME, COLOR_KEY, LINE_THICK and
 * IS_SELECTED. Invalid JSON sets nothing. An empty script reports on the last compile and keeps it.
 * Returns the report, a JSON object with ErrCode 0 for success and else ExtraMsg, the word at fault
 * or empty where the code says all, and ErrLine, the zero-based statement slot. Bad handle: null
 * with length 0. A null text: null, length unwritten. */
QUOR_API char* get_pre_parse_res(int64_t handle, const char* script, const char* parameters,
                                 const char* lines, uint32_t script_length,
                                 uint32_t parameters_length, uint32_t lines_length,
                                 uint32_t* length);

/* ---- Data in. Bad handle: nothing happens. ---- */

/* Takes bars: a JSON array of objects in any order, each with the row key under "1" and further
 * fields under their column ids in decimal. Fields that the script doesn't need are passed over; a
 * missing one, one that is no number, 4294967295 and 2147483648 are null. A known key replaces the
 * needed fields of its bar. Of a text that is no array in JSON nothing is taken, and a log line
 * tells. An element that is no object with an integer under "1" ends the intake without one; bars
 * in front of it are kept. */
QUOR_API void set_row_data(int64_t handle, const char* json, uint32_t json_length);

/* Sets one cell of an existing bar, adding the column if it is new. For a key without a bar it
 * makes a bar of nulls and drops the value. Keys below 1 do nothing. */
QUOR_API void set_column_data(int64_t handle, uint64_t row_key, uint32_t column_id, double value);

/* Drops all bars; the script and its columns stay. */
QUOR_API void clear_data(int64_t handle);

/* ---- Calculate ---- */

/* Calculates all statements from `first_row` to the last bar. With `fire_signals` other than 0
 * notices and trade signals reach their handlers. Returns {"ErrCode":0,"ExtraMsg":"","ErrLine":""};
 * a code other than 0 says what stopped the run and, where it is known, in which statement. Bad
 * handle: null, length unwritten. */
QUOR_API char* exec_parser_cal(int64_t handle, uint32_t first_row, uint8_t fire_signals,
                               uint32_t* length);

/* ---- Read ---- */

/* Counts of bars and columns. Bad handle: 0. */
QUOR_API uint32_t get_row_num(int64_t handle);
QUOR_API uint32_t get_column_num(int64_t handle);

/* The row of a key. Unknown key or bad handle: all-ones. */
QUOR_API uint32_t get_current_row_index(int64_t handle, uint64_t row_key);

/* The last `count` cells of a column up to and including `last_row`, as
 * {"count":2,"data":[null,12.500000]}; fewer where the bars begin, nulls beyond the last bar and
 * for an unknown column. A count below 0 gives none, but -2147483648 the whole column up to the
 * row. Bad handle: null with length 0. */
QUOR_API char* get_data_arr(int64_t handle, uint32_t column_id, uint32_t last_row, int32_t count,
                            uint32_t* length);

/* One cell. Mind the order: row first. Out of range, unknown column or bad handle: a null value. */
QUOR_API double get_data_by_col_row(int64_t handle, int32_t row, uint32_t column_id);

/* One cell by field and row. A negative field id names an argument of a call, which is evaluated on
 * the spot; a signal in it fires if the last run fired. No such field, a failure or a bad handle: a
 * null value. */
QUOR_API double get_field_val_by_index(int64_t handle, int32_t field_id, int32_t row);

/* The column id of a line by its name in capitals. Unknown name, null name or bad handle: -1. */
QUOR_API int32_t get_field_id_by_param_name(int64_t handle, const char* name, uint32_t name_length);

/* The words of all functions that the script calls, as a JSON array of strings. Bad handle: null
 * with length 0, here and in the two calls below. */
QUOR_API char* get_invoke_functions(int64_t handle, uint32_t* length);

/* The ids of the fields that the script reads and of the columns that it declares, as a JSON array.
 */
QUOR_API char* get_parser_variable_fields(int64_t handle, uint32_t* length);

/* What the script draws, as a JSON array of records that point into columns. */
QUOR_API char* get_shapes(int64_t handle, uint32_t* length);

/* ---- Memory ---- */

/* Takes back a buffer that a call above has returned. Null is ignored. */
QUOR_API void release_ptr_val(char* buffer);

#ifdef __cplusplus
}
#endif

#endif
