// The session of session.c in C#, with the same printout.
//   mcs session.cs && mono session.exe    the loader must find the library, see README.md
// On .NET the project needs a target of 64 bits, as the library has.
using System;
using System.Globalization;
using System.Runtime.InteropServices;
using System.Text;

/// The calls in use. A text is handed over as its bytes and their number.
static class Native {
  const string Library = "lib_quor_parser";

  [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
  public delegate void LogHandler(byte level, IntPtr text, ulong uuid);

  [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
  public delegate void NoticeHandler(long time, uint columnId, ulong uuid, IntPtr text);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern Instance create_instance();

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern void delete_instance(IntPtr handle);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern void set_logger_handler(LogHandler handler, byte minimumLevel);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern void set_parser_notice_callback_handler(NoticeHandler handler);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern void set_parser_instance_uuid(Instance handle, ulong uuid);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern void set_indicator_extra_info(
      Instance handle, uint periodCode, byte[] security, byte[] market, byte[] text,
      byte[] timeZone, uint securityLength, uint marketLength, uint textLength,
      uint timeZoneLength);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern TextBuffer get_pre_parse_res(
      Instance handle, byte[] script, byte[] parameters, byte[] lines, uint scriptLength,
      uint parametersLength, uint linesLength, out uint length);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern void set_row_data(Instance handle, byte[] json, uint jsonLength);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern void set_column_data(
      Instance handle, ulong rowKey, uint columnId, double value);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern TextBuffer exec_parser_cal(
      Instance handle, uint firstRow, byte fireSignals, out uint length);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern uint get_row_num(Instance handle);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern uint get_current_row_index(Instance handle, ulong rowKey);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern TextBuffer get_data_arr(
      Instance handle, uint columnId, uint lastRow, int count, out uint length);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern double get_data_by_col_row(Instance handle, int row, uint columnId);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern int get_field_id_by_param_name(
      Instance handle, byte[] name, uint nameLength);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern TextBuffer get_shapes(Instance handle, out uint length);

  [DllImport(Library, CallingConvention = CallingConvention.Cdecl)]
  public static extern void release_ptr_val(IntPtr buffer);
}

/// An instance of the library, ended when it is disposed of or collected. Its handle is 64 bits
/// wide, as a pointer is.
sealed class Instance : SafeHandle {
  Instance() : base(IntPtr.Zero, true) {}

  public override bool IsInvalid => handle == IntPtr.Zero;

  protected override bool ReleaseHandle() {
    Native.delete_instance(handle);
    return true;
  }
}

/// A text that the library returns, given back the same way.
sealed class TextBuffer : SafeHandle {
  TextBuffer() : base(IntPtr.Zero, true) {}

  public override bool IsInvalid => handle == IntPtr.Zero;

  public string Read(uint length) => IsInvalid ? null : Utf8.Read(handle, (int)length);

  protected override bool ReleaseHandle() {
    Native.release_ptr_val(handle);
    return true;
  }
}

static class Utf8 {
  public static byte[] Bytes(string text) => Encoding.UTF8.GetBytes(text);

  public static string Read(IntPtr text, int length) {
    var bytes = new byte[length];
    Marshal.Copy(text, bytes, 0, length);
    return Encoding.UTF8.GetString(bytes);
  }

  /// A text with a zero at its end, as handlers get it.
  public static string Read(IntPtr text) {
    int length = 0;
    while (Marshal.ReadByte(text, length) != 0) ++length;
    return Read(text, length);
  }
}

/// A report or an answer with another code than 0.
sealed class ParserException : Exception {
  public ParserException(string answer) : base(answer) {}
}

/// The ids under which a row carries its fields. A client sends at least those that the report
/// lists in ExtraKLineFieldList; the library passes over the others.
static class Field {
  public const uint Key = 1, Open = 7, High = 8, Low = 9, Close = 11, Volume = 13;
}

sealed class Bar {
  public readonly ulong Key;  // YYYYMMDDhhmmss
  readonly double open, high, low, close, volume;

  public Bar(ulong key, double open, double high, double low, double close, double volume) {
    Key = key;
    this.open = open;
    this.high = high;
    this.low = low;
    this.close = close;
    this.volume = volume;
  }

  /// An object of the rows' JSON. A value that a client doesn't have is null or left out.
  public string Json => "{" + string.Join(
      ",", Cell(Field.Key, Key), Cell(Field.Open, open), Cell(Field.High, high),
      Cell(Field.Low, low), Cell(Field.Close, close), Cell(Field.Volume, volume)) + "}";

  static string Cell(uint field, IFormattable value) =>
      "\"" + field + "\":" + value.ToString("G17", CultureInfo.InvariantCulture);
}

/// One script over the bars of one security.
sealed class Parser : IDisposable {
  readonly Instance instance = Native.create_instance();

  delegate TextBuffer TextCall(out uint length);

  public Parser(ulong uuid) {
    if (instance.IsInvalid) throw new OutOfMemoryException();
    Native.set_parser_instance_uuid(instance, uuid);
  }

  public void Dispose() => instance.Dispose();

  public void SetSubject(uint period, string security, string market, string timeZone) {
    byte[] code = Utf8.Bytes(security), place = Utf8.Bytes(market), zone = Utf8.Bytes(timeZone);
    Native.set_indicator_extra_info(instance, period, code, place, new byte[0], zone,
                                    (uint)code.Length, (uint)place.Length, 0, (uint)zone.Length);
  }

  public string Compile(string script, string parameters) {
    byte[] text = Utf8.Bytes(script), numbers = Utf8.Bytes(parameters);
    return Checked(Take((out uint length) => Native.get_pre_parse_res(
        instance, text, numbers, new byte[0], (uint)text.Length, (uint)numbers.Length, 0,
        out length)));
  }

  /// Hands bars over: new ones, and others in place of those with the same key.
  public void Feed(params Bar[] bars) {
    byte[] rows = Utf8.Bytes("[" + string.Join(",", Array.ConvertAll(bars, bar => bar.Json)) + "]");
    Native.set_row_data(instance, rows, (uint)rows.Length);
  }

  public void SetCell(ulong key, uint column, double value) =>
      Native.set_column_data(instance, key, column, value);

  /// Calculates from a row on. Notices are for what happens now: history goes without them.
  public void Calculate(uint firstRow, bool withNotices) => Checked(Take((out uint length) =>
      Native.exec_parser_cal(instance, firstRow, (byte)(withNotices ? 1 : 0), out length)));

  public uint RowCount => Native.get_row_num(instance);

  public uint RowOf(ulong key) => Native.get_current_row_index(instance, key);

  public uint ColumnOf(string name) {
    byte[] text = Utf8.Bytes(name);
    int column = Native.get_field_id_by_param_name(instance, text, (uint)text.Length);
    if (column < 0) throw new ArgumentException(name);
    return (uint)column;
  }

  public double Cell(uint row, uint column) =>
      Native.get_data_by_col_row(instance, (int)row, column);

  public string LastValues(uint column, int count) => Take((out uint length) =>
      Native.get_data_arr(instance, column, RowCount - 1, count, out length));

  public string DrawList =>
      Take((out uint length) => Native.get_shapes(instance, out length));

  static string Take(TextCall call) {
    using (TextBuffer buffer = call(out uint length)) return buffer.Read(length);
  }

  static string Checked(string answer) {
    if (answer == null || !answer.Contains("\"ErrCode\":0,")) throw new ParserException(answer);
    return answer;
  }
}

static class Session {
  const uint PeriodOneDay = 0x4000;
  const byte LogErrors = 2;

  const string Script = "AVG:MA(C,N),COLORRED,LINETHICK2;\nCROSS(C,AVG),NOTICE('up');\n";
  const string Parameters = "[{\"PARAM_NAME\":\"N\",\"DEFAULT\":2}]";

  static readonly Bar[] History = {
    new Bar(20240102000000, 12, 12.5, 11.5, 12, 300),
    new Bar(20240103000000, 12, 12, 9.5, 10, 400),
    new Bar(20240104000000, 10, 10, 9, 9, 100),
  };
  static readonly Bar FormingBar = new Bar(20240104000000, 10, 11.5, 9, 11, 200);
  static readonly Bar NextBar = new Bar(20240105000000, 13, 14, 13, 14, 100);

  // What the library tells by itself. Neither handler may call the instance back. The library keeps
  // only an address, so the delegates are held here, where no collection finds them.
  static readonly Native.LogHandler ShowLogLine = (level, text, uuid) =>
      Console.Error.WriteLine("log {0} of instance {1}: {2}", level, uuid, Utf8.Read(text));
  static readonly Native.NoticeHandler ShowNotice = (time, columnId, uuid, text) =>
      Print("notice of instance {0}, column {1}: {2}", uuid, columnId, Utf8.Read(text));

  static void Print(string format, params object[] values) =>
      Console.WriteLine(string.Format(CultureInfo.InvariantCulture, format, values));

  static void ShowLine(string title, Parser parser, string name) {
    Print("{0}:", title);
    uint column = parser.ColumnOf(name);
    for (uint row = 0; row < parser.RowCount; ++row) {
      double key = parser.Cell(row, Field.Key), value = parser.Cell(row, column);
      Print(double.IsNaN(value) ? "  {0:F0} {1} null" : "  {0:F0} {1} {2:F2}", key, name, value);
    }
  }

  static void RunSession(Parser parser) {
    parser.SetSubject(PeriodOneDay, "600000", "USHA", "UTC+08:00");
    Print("report: {0}", parser.Compile(Script, Parameters));

    parser.Feed(History);
    parser.Calculate(0, false);
    ShowLine("history", parser, "AVG");

    // The last bar changes while it forms: as a whole bar, or cell by cell.
    parser.Feed(FormingBar);
    parser.Calculate(parser.RowOf(FormingBar.Key), true);
    ShowLine("forming bar, close 11", parser, "AVG");
    parser.SetCell(FormingBar.Key, Field.Close, 13);
    parser.Calculate(parser.RowOf(FormingBar.Key), true);
    ShowLine("forming bar, close 13", parser, "AVG");

    parser.Feed(NextBar);
    parser.Calculate(parser.RowOf(NextBar.Key), true);
    ShowLine("next bar", parser, "AVG");

    Print("last two values: {0}", parser.LastValues(parser.ColumnOf("AVG"), 2));
    Print("draw list: {0}", parser.DrawList);
  }

  /// The report names what is wrong and the statement, the first one being 0.
  static bool ShowError() {
    using (var parser = new Parser(2)) {
      try {
        parser.Compile("AVG:MA(C,N);TWICE:AVRAGE(C,N)*2;", Parameters);
      } catch (ParserException error) {
        Print("report: {0}", error.Message);
        return true;
      }
      return false;
    }
  }

  static int Main() {
    Console.OutputEncoding = new UTF8Encoding(false);
    Native.set_logger_handler(ShowLogLine, LogErrors);
    Native.set_parser_notice_callback_handler(ShowNotice);
    using (var parser = new Parser(1)) RunSession(parser);
    return ShowError() ? 0 : 1;
  }
}
