#include "word_help.h"
#include "words/families.h"

namespace quor_advice {
namespace {

constexpr std::string_view null_at_bad_key = "Null at a bar with an invalid key.";

constexpr WordHelp date_rows[] = {
    {"YEAR", "YEAR", 0, 0, "Year of the bar's trading day, such as 2024.", "",
     "1900 at a bar with an invalid key.", "A:YEAR*100+MONTH;"},
    {"MONTH", "MONTH", 0, 0, "Month of the bar's trading day, 1 to 12.", "", null_at_bad_key,
     "A:MONTH;"},
    {"DAY", "DAY", 0, 0, "Day of the month of the bar's trading day, 1 to 31.", "", null_at_bad_key,
     "A:DAY;"},
    {"HOUR", "HOUR", 0, 0, "Hour of the bar's time.", "", null_at_bad_key, "A:HOUR;"},
    {"MINUTE", "MINUTE", 0, 0, "Minute of the bar's time.", "", "0 at a bar with an invalid key.",
     "A:MINUTE;"},
    {"QUARTER", "QUARTER", 0, 0, "Quarter of the bar's trading day, 1 to 4.", "",
     "1 at a bar with an invalid key.", "A:QUARTER;"},
    {"WEEKDAY", "WEEKDAY", 0, 0, "Day of the week, 0 Sunday to 6 Saturday.", "", "",
     "A:WEEKDAY=5;"},
    {"DATE", "DATE", 0, 0, "Date of the bar's trading day, such as 20240105.", "", null_at_bad_key,
     "A:DATE;"},
    {"DATE1", "DATE1", 0, 0, "Date as 1240105 for 2024-01-05 and 991231 for 1999-12-31.", "", "",
     "A:DATE1;"},
    {"TIME", "TIME", 0, 0,
     "Time of the bar as HHMM, with periods of seconds HHMMSS; 1500 at bars of a day and longer.",
     "", null_at_bad_key, "A:TIME>=930;"},
    {"TIME0", "TIME0", 0, 0, "Seconds since midnight of the bar's time.", "", null_at_bad_key,
     "A:TIME0;"},
    {"CURRENTDATE", "CURRENTDATE", 0, 0, "Date by the clock of the machine, in the form of DATE1.",
     "", "", "A:CURRENTDATE;"},
    {"CURRENTTIME", "CURRENTTIME", 0, 0, "Time by the clock of the machine, as HHMMSS.", "", "",
     "A:CURRENTTIME;"},
    {"PERIOD", "PERIOD", 0, 0,
     "Number of the bars' period: 0 seconds, 1 to 7 for 1, 3, 5, 10, 15, 30, 60 minutes, 8 day, 9 "
     "week, 10 month, 15 quarter, 11 year; -1 other, -2 not set.",
     "", "", "A:PERIOD;"},
    {"BARINTERVAL", "BARINTERVAL", 0, 0, "Multiple of the bars' period, 5 for five minutes.", "",
     "", "A:BARINTERVAL;"},
    {"BARTYPE", "BARTYPE", 0, 0,
     "Class of the bars' period: 0 day, 1 minute, 2 hour, 4 week, 5 month, 6 quarter, 7 year, 8 "
     "second, 9 tick.",
     "", "", "A:BARTYPE;"},
    {"TIMETOT0", "TIMETOT0(X)", 1, 1, "A time HHMMSS as seconds: 93000 gives 34200.",
     "X: a time of six digits at most", "Seven digits, and null, give 0.", "A:TIMETOT0(93000);"},
    {"T0TOTIME", "T0TOTIME(X)", 1, 1, "Seconds as a time HHMMSS: 34200 gives 93000.",
     "X: seconds since midnight", "", "A:T0TOTIME(34200);"},
};

}  // namespace

std::span<const WordHelp> date_help() { return date_rows; }

}  // namespace quor_advice
