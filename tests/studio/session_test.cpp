// Scripts over bars, as a page sees them.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <set>

#include "studio.h"

namespace {

/// The answer of a view, taken apart.
struct View {
  Json header;
  std::vector<double> rows;
  std::vector<double> keys;
  std::map<int, std::vector<double>> columns;  ///< pairs one behind the other

  explicit View(const std::string& bytes) {
    uint32_t size = 0;
    std::memcpy(&size, bytes.data(), sizeof size);
    header = Json::parse(bytes.substr(sizeof size, size));
    size_t at = sizeof size + size;
    EXPECT_EQ(at % sizeof(double), 0U);
    const auto count = header["count"].get<size_t>();
    const auto take = [&](size_t n) {
      std::vector<double> values(n);
      if (n > 0) std::memcpy(values.data(), bytes.data() + at, n * sizeof(double));
      at += n * sizeof(double);
      return values;
    };
    rows = take(count);
    keys = take(count);
    for (const Json& column : header["columns"]) {
      columns[column["id"]] = take(column["as"] == "pair" ? 2 * count : count);
    }
    EXPECT_EQ(at, bytes.size());
  }
};

struct SessionTest : testing::Test {
  SessionTest() : studio({"--bars", QUOR_SAMPLES "/index-daily.csv"}) { studio.enter(); }

  /// A session with the sample bars.
  std::string open() {
    std::string session = studio.open();
    EXPECT_EQ(studio.post(session + "/bars", {{"security", "index-daily"}}).status, 200);
    return session;
  }
  Json run(const std::string& session, const std::string& script,
           const Json& parameters = Json::array()) {
    const Reply reply =
        studio.post(session + "/script", {{"script", script}, {"parameters", parameters}});
    EXPECT_EQ(reply.status, 200) << reply.body;
    return reply.json();
  }
  View view(const std::string& session, const std::string& query) {
    return View(studio.get(session + "/view?" + query).body);
  }

  Studio studio;
};

TEST_F(SessionTest, lines_are_those_of_the_command_line) {
  const std::string session = open();
  const Json samples = studio.get("/api/start").json()["samples"];
  Folder folder;
  size_t compared = 0;
  for (const Json& sample : samples) {
    const std::string text = sample["text"];
    const Json answer = run(session, text);
    ASSERT_TRUE(answer["sound"]) << sample["name"];
    folder.write("script.quor", text);
    const Outcome outcome =
        run_quor({"run", folder.path("script.quor"), "--csv", "--all", "--period", "day", "--bars",
                  QUOR_SAMPLES "/index-daily.csv"});
    const std::string csv = studio.get(session + "/export.csv").body;
    ASSERT_FALSE(csv.empty());
    EXPECT_TRUE(outcome.output.ends_with(csv)) << sample["name"];
    ++compared;
  }
  EXPECT_GE(compared, 25U);
}

TEST_F(SessionTest, tells_of_a_mistake_at_its_place_and_keeps_the_chart) {
  const std::string session = open();
  run(session, "A:MA(C,5);");
  // The note takes two units in front of the place, though it is one character of four bytes.
  const std::string script = "{\xF0\x9D\x84\x9E \xC3\xA9}\nA:MA(C,5);\r\nB:EMMA(C,3);";
  const Json answer = run(session, script);
  EXPECT_FALSE(answer["sound"]);
  const Json finding = answer["findings"].back();
  EXPECT_EQ(finding["sentence"], "nothing defines EMMA");
  EXPECT_EQ(finding["line"], 3);
  EXPECT_EQ(finding["from"], 21);
  EXPECT_EQ(finding["to"], 25);
  EXPECT_EQ(studio.get(session + "/values?row=10").json()["lines"].size(), 1U);
}

TEST_F(SessionTest, sliders_have_parameters_and_constants) {
  const std::string session = open();
  const std::string script = "CONST N:20;\nCONST F:-0.5;A:MA(C,N)*F+MA(C,M);";
  const Json answer =
      run(session, script, Json::parse(R"([{"name":"m","value":6},{"name":"X","value":1}])"));
  ASSERT_TRUE(answer["sound"]) << answer;
  std::map<std::string, Json> sliders;
  for (const Json& slider : answer["sliders"]) {
    sliders[slider["name"]] = slider;
    EXPECT_LE(slider["low"], slider["value"]);
    EXPECT_GE(slider["high"], slider["value"]);
    EXPECT_GT(slider["step"], 0);
  }
  EXPECT_EQ(sliders.size(), 4U);
  const auto written = [&](const char* name) {
    const Json& slider = sliders.at(name);
    return script.substr(slider["from"], slider["to"].get<size_t>() - slider["from"].get<size_t>());
  };
  EXPECT_EQ(written("N"), "20");
  EXPECT_EQ(written("F"), "-0.5");
  EXPECT_EQ(sliders.at("M")["idle"], false);
  EXPECT_EQ(sliders.at("X")["idle"], true);
}

TEST_F(SessionTest, a_view_has_the_values_of_all_its_rows) {
  const std::string session = open();
  const Json answer = run(session, "A:MA(C,5);B:=C>O;");
  const View view = this->view(session, "from=100&to=140&points=40");
  EXPECT_EQ(view.header["revision"], answer["revision"]);
  EXPECT_EQ(view.header["bucket"], 1);
  EXPECT_EQ(view.rows.front(), 100);
  EXPECT_EQ(view.rows.size(), 40U);
  for (const size_t i : {0U, 17U, 39U}) {
    const Json values = studio.get(session + "/values?row=" + std::to_string(100 + i)).json();
    EXPECT_EQ(values["key"], view.keys[i]);
    EXPECT_EQ(values["fields"]["11"], view.columns.at(11)[i]);
    for (size_t line = 0; line < 2; ++line) {
      EXPECT_EQ(values["lines"][line], view.columns.at(answer["lines"][line]["column"])[i]);
    }
  }
  EXPECT_EQ(studio.get(session + "/values?row=5105").status, 404);
  EXPECT_EQ(this->view(session, "from=9000&to=9100").rows.size(), 0U);
}

TEST_F(SessionTest, a_thinned_view_keeps_the_ends_of_its_buckets) {
  const std::string session = open();
  const Json answer = run(session, "A:C-O;PARTLINE(C>O,C*2,COLORRED);");
  const auto line = answer["lines"][0]["column"].get<int>();
  const Json part = answer["records"].back()["ShapeName"] == "VolumeShape"
                        ? answer["records"][2]
                        : answer["records"].back();
  ASSERT_EQ(part["Style"], "PartLine");
  const View all = view(session, "points=20000");
  const View few = view(session, "from=3&to=5105&points=100");
  const auto bucket = few.header["bucket"].get<size_t>();
  const auto count = few.header["count"].get<size_t>();
  EXPECT_EQ(bucket, 52U);
  const auto shown = [&](int column, size_t row) {
    const bool is_hidden =
        column == part["Field1Id"] && all.columns.at(part["Field1VisibleId"])[row] != 1.0;
    return is_hidden ? std::nan("") : all.columns.at(column)[row];
  };
  for (size_t i = 0; i < count; ++i) {
    const size_t begin = 3 + i * bucket;
    const size_t end = std::min<size_t>(begin + bucket, 5105);
    EXPECT_EQ(few.rows[i], begin);
    double high = -1e300;
    double low = 1e300;
    double volume = 0.0;
    for (size_t row = begin; row < end; ++row) {
      high = std::max(high, all.columns.at(8)[row]);
      low = std::min(low, all.columns.at(9)[row]);
      volume += all.columns.at(13)[row];
    }
    EXPECT_EQ(few.columns.at(7)[i], all.columns.at(7)[begin]);
    EXPECT_EQ(few.columns.at(8)[i], high);
    EXPECT_EQ(few.columns.at(9)[i], low);
    EXPECT_EQ(few.columns.at(11)[i], all.columns.at(11)[end - 1]);
    EXPECT_EQ(few.columns.at(13)[i], volume);
    for (const int column : {line, part["Field1Id"].get<int>()}) {
      size_t least = end;
      size_t most = end;
      for (size_t row = begin; row < end; ++row) {
        const double value = shown(column, row);
        if (std::isnan(value)) continue;
        if (least == end || value < shown(column, least)) least = row;
        if (most == end || value > shown(column, most)) most = row;
      }
      ASSERT_NE(least, end);
      EXPECT_EQ(few.columns.at(column)[i], shown(column, std::min(least, most)));
      EXPECT_EQ(few.columns.at(column)[count + i], shown(column, std::max(least, most)));
    }
  }
}

TEST_F(SessionTest, panes_hold_what_shares_an_axis) {
  const std::string session = open();
  const Json answer = run(session, "A:MA(C,20);OSC:MA(C>O,9)*100;EIGHTY:80;");
  const Json& panes = answer["panes"];
  ASSERT_EQ(panes.size(), 2U);
  EXPECT_EQ(panes[0]["records"], Json({0, 1}));
  EXPECT_EQ(panes[1]["records"], Json({2, 3}));
  EXPECT_EQ(panes[1]["levels"], Json::parse(R"([{"record":3,"value":80}])"));
  EXPECT_NEAR(panes[0]["weight"].get<double>() + panes[1]["weight"].get<double>(), 1.0, 1e-9);
  const Json& record = answer["records"][2];
  EXPECT_EQ(record["title"], "OSC");
  EXPECT_EQ(record["pane"], 1);
  EXPECT_TRUE(answer["colours"].contains(record["LineColor"].get<std::string>()));
  const Json with_volume = run(session, "A:MA(C,20);");
  EXPECT_EQ(with_volume["panes"].size(), 2U);
  EXPECT_EQ(with_volume["records"].back()["ShapeName"], "VolumeShape");
}

TEST_F(SessionTest, all_kinds_of_records_say_where_they_show) {
  std::set<std::string> kinds;
  std::set<std::string> shown;
  const std::string session = open();
  std::string scripts[] = {
      "BACKGROUNDSTYLE(1);PLAYSOUND(C>O,'A');FILLRGN(C>O,O,C,COLORRED);"
      "CROSS(C,MA(C,5)),NOTICE('up');CROSS(C,MA(C,9)),BK(1);"};
  const Json samples = studio.get("/api/start").json()["samples"];
  std::vector<std::string> texts(std::begin(scripts), std::end(scripts));
  for (const Json& sample : samples) {
    if (sample["name"].get<std::string>().starts_with("showcase")) texts.push_back(sample["text"]);
  }
  for (const std::string& text : texts) {
    const Json answer = run(session, text);
    EXPECT_TRUE(answer["sound"]) << answer["findings"];
    for (const Json& record : answer["records"]) kinds.insert(record["ShapeName"]);
    const Json records = studio.get(session + "/records?from=4900&to=5105").json()["records"];
    for (const Json& record : records) {
      const Json& kind = answer["records"][record["index"].get<size_t>()]["ShapeName"];
      for (const Json& bar : record["shown"]) {
        EXPECT_LT(bar["row"], 5105);
        EXPECT_TRUE(bar["values"].is_object());
        shown.insert(kind);
      }
    }
  }
  for (const char* const kind : {"BarShape", "CandleShape", "FuturesTradeShape", "ImageShape",
                                 "NoticeShape", "PolygonShape", "PolylineShape", "RectShape",
                                 "SoundShape", "StraightLineShape", "TextShape", "YAxisRange"}) {
    EXPECT_TRUE(kinds.contains(kind)) << kind;
  }
  for (const char* const kind : {"FuturesTradeShape", "ImageShape", "NoticeShape", "PolylineShape",
                                 "RectShape", "SoundShape", "StraightLineShape", "TextShape"}) {
    EXPECT_TRUE(shown.contains(kind)) << kind;
  }
}

TEST_F(SessionTest, hostile_texts_stay_texts) {
  const std::string session = open();
  const Json answer = run(session,
                          "DRAWTEXT(C>O,H,'\\<img src=x>&\\n');"
                          "CROSS(C,MA(C,5)),NOTICE('\\script');");
  ASSERT_TRUE(answer["sound"]) << answer["findings"];
  EXPECT_TRUE(answer["records"][1]["Text"].get<std::string>().starts_with("\\"));
  const Json events = studio.get(session + "/events?limit=1").json();
  EXPECT_TRUE(events["events"][0]["name"].get<std::string>().starts_with("\\"));
  const Reply named = studio.post(session + "/bars?name=%3Cb%3E%22%FF", made_bars(10), "text/csv");
  EXPECT_EQ(named.status, 200);
  EXPECT_EQ(named.json()["name"], "<b>\"\xEF\xBF\xBD");
}

TEST_F(SessionTest, a_revision_is_of_what_is_seen) {
  const std::string session = open();
  const Json first = run(session, "A:MA(C,2);");
  const auto bars = [&](size_t count) {
    return studio.post(session + "/bars", made_bars(count), "text/csv").json();
  };
  const auto expect_seen = [&](const Json& drawn, size_t rows) {
    const View all = view(session, "");
    EXPECT_EQ(all.header["revision"], drawn["revision"]);
    EXPECT_EQ(all.header["rows"], rows);
    EXPECT_EQ(drawn["rows"], rows);
    for (const Json& line : drawn["lines"]) EXPECT_TRUE(all.columns.contains(line["column"]));
  };
  expect_seen(first, 5105);

  const Json other = bars(50);
  EXPECT_GT(other["revision"], first["revision"]);
  EXPECT_EQ(other["script"]["revision"], other["revision"]);
  expect_seen(other["script"], 50);

  const Json broken = run(session, "A:MA(C,2;");
  EXPECT_FALSE(broken.contains("records"));
  EXPECT_EQ(broken["revision"], other["revision"]) << "the chart stays as it is";
  const Json more = bars(60);
  EXPECT_FALSE(more["script"]["sound"]);
  EXPECT_EQ(more["script"]["findings"], broken["findings"]);
  EXPECT_EQ(more["script"]["lines"][0]["name"], "A") << "what was seen is seen over other bars";
  expect_seen(more["script"], 60);

  const std::string second = open();
  const Json none = run(second, "A:MA(C,2;");
  EXPECT_FALSE(none["sound"]);
  EXPECT_TRUE(none["lines"].empty());
  EXPECT_EQ(none["records"][0]["ShapeName"], "CandleShape") << "the bars alone";
}

TEST_F(SessionTest, bars_of_a_text_take_the_place_of_those_before) {
  const std::string session = open();
  run(session, "A:MA(C,2);");
  const Reply reply = studio.post(session + "/bars?name=mine",
                                  "date,close\n2024-01-02 09:35,2\n2024-01-02 09:30,1\n"
                                  "2024-01-02 09:40,4\n",
                                  "text/csv");
  ASSERT_EQ(reply.status, 200) << reply.body;
  const Json answer = reply.json();
  EXPECT_EQ(answer["rows"], 3);
  EXPECT_EQ(answer["period"]["name"], "5min");
  EXPECT_EQ(answer["intraday"], true);
  EXPECT_TRUE(answer["script"]["sound"]);
  EXPECT_EQ(studio.get(session + "/export.csv").body,
            "date,A\n2024-01-02 09:30:00,\n2024-01-02 09:35:00,1.5\n2024-01-02 09:40:00,3\n");
  const Json missing = run(session, "A:V;");
  EXPECT_EQ(missing["missing"][0]["field"], 13);
}

}  // namespace
