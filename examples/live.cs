// The live client of live.c in C#, over the classes of session.cs.
//   mcs -main:Live live.cs session.cs -out:live.exe && tail -f bars.csv | mono live.exe
using System;
using System.Globalization;
using System.Text;

static class Live {
  const uint PeriodFiveMinutes = 0x3005;
  const string Script = "FAST:MA(C,2);SLOW:MA(C,3);CROSS(FAST,SLOW),NOTICE('up');";
  static readonly string[] Lines = {"FAST", "SLOW"};

  // No call back into the instance from here. The library keeps only an address.
  static readonly Native.NoticeHandler HearNotice = (time, columnId, uuid, text) =>
      Console.WriteLine("up");

  /// "20240108093500,10,10.4,9.8,10.2,1200"; null for a line of another form.
  static Bar ReadBar(string line) {
    string[] cells = line.Split(',');
    var values = new double[6];
    if (cells.Length != values.Length || !ulong.TryParse(cells[0], out ulong key)) return null;
    for (int i = 1; i < values.Length; ++i) {
      if (!double.TryParse(cells[i], NumberStyles.Float, CultureInfo.InvariantCulture,
                           out values[i])) {
        return null;
      }
    }
    return new Bar(key, values[1], values[2], values[3], values[4], values[5]);
  }

  static void ShowRow(Parser parser, ulong key, uint row) {
    var text = new StringBuilder(key.ToString(CultureInfo.InvariantCulture));
    foreach (string name in Lines) {
      double value = parser.Cell(row, parser.ColumnOf(name));
      text.Append(' ').Append(name).Append(' ').Append(
          double.IsNaN(value) ? "null" : value.ToString("F2", CultureInfo.InvariantCulture));
    }
    Console.WriteLine(text);
  }

  static int Main() {
    Native.set_parser_notice_callback_handler(HearNotice);
    using (var parser = new Parser(1)) {
      parser.SetSubject(PeriodFiveMinutes, "600000", "USHA", "UTC+08:00");
      parser.Compile(Script, "");
      for (string line; (line = Console.ReadLine()) != null;) {
        Bar bar = ReadBar(line);
        if (bar == null) {
          Console.Error.WriteLine("no bar: " + line);
          continue;
        }
        parser.Feed(bar);
        uint row = parser.RowOf(bar.Key);
        parser.Calculate(row, true);
        ShowRow(parser, bar.Key, row);
      }
    }
    return 0;
  }
}
