// Runs every test vector, in full and incrementally.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/vectors.h"

namespace quor_test {
namespace {

class VectorTest : public testing::TestWithParam<Vector> {
 protected:
  /// A host that has compiled the vector's script.
  void prepare(TestHost& host) const {
    const Vector& vector = GetParam();
    host.set_info(vector.period, vector.security, vector.market);
    host.set_keys(vector.keys);
    const Report report = host.compile(vector.script, vector.parameters);
    ASSERT_EQ(report.code, 0) << report.text;
  }

  size_t row_count() const {
    size_t rows = 0;
    for (const auto& [field, values] : GetParam().bars) rows = std::max(rows, values.size());
    return rows;
  }

  /// All columns that a host can see.
  static std::vector<Series> all_columns(const TestHost& host) {
    std::vector<Series> columns;
    for (uint32_t id = 20000; columns.size() < get_column_num(host.handle()); ++id) {
      columns.push_back(host.column(id));
    }
    return columns;
  }

  static void expect_equal_columns(const std::vector<Series>& got, const std::vector<Series>& full,
                                   const std::string& how) {
    ASSERT_EQ(got.size(), full.size()) << how;
    for (size_t i = 0; i < full.size(); ++i) {
      EXPECT_TRUE(same(got[i], full[i])) << how << ", column " << 20000 + i << "\n  got  "
                                         << to_text(got[i]) << "\n  full " << to_text(full[i]);
    }
  }
};

TEST_P(VectorTest, Full) {
  const Vector& vector = GetParam();
  TestHost host;
  host.set_info(vector.period, vector.security, vector.market);
  host.set_keys(vector.keys);
  const Report report = host.compile(vector.script, vector.parameters);
  if (vector.fails) {
    EXPECT_EQ(report.code, vector.code);
    EXPECT_EQ(report.message, vector.message);
    EXPECT_EQ(report.line, vector.line);
    return;
  }
  ASSERT_EQ(report.code, 0) << report.text;
  if (vector.look_back >= 0) {
    EXPECT_EQ(report.look_back, vector.look_back);
  }
  if (!vector.fields.empty()) {
    EXPECT_EQ(report.fields, vector.fields);
  }
  host.feed(vector.bars);
  const std::string answer = host.run();
  if (vector.stops) {
    EXPECT_EQ(answer,
              R"({"ErrCode":)" + std::to_string(vector.code) + R"(,"ExtraMsg":")" + vector.message +
                  R"(","ErrLine":")" +
                  (vector.message.empty() && vector.line < 0 ? "" : std::to_string(vector.line)) +
                  R"("})");
    return;
  }
  EXPECT_EQ(answer, success);
  for (const auto& [name, values] : vector.expected) {
    EXPECT_TRUE(same(host.line(name), values))
        << name << "\n  got    " << to_text(host.line(name)) << "\n  expect " << to_text(values);
  }
  for (const auto& [name, values] : vector.near) {
    const Series got = host.line(name);
    ASSERT_EQ(got.size(), values.size()) << name;
    for (size_t row = 0; row < got.size(); ++row) {
      const bool close = std::isnan(values[row]) ? std::isnan(got[row])
                                                 : std::abs(got[row] - values[row]) <=
                                                       1e-9 * std::max(1.0, std::abs(values[row]));
      EXPECT_TRUE(close) << name << " at row " << row << ": " << got[row] << ", not "
                         << values[row];
    }
  }
}

TEST_P(VectorTest, Incremental) {
  const Vector& vector = GetParam();
  if (vector.fails || vector.stops || vector.whole_run_only) return;
  TestHost full;
  prepare(full);
  full.feed(vector.bars);
  ASSERT_EQ(full.run(), success);
  const std::vector<Series> expected = all_columns(full);

  const size_t rows = row_count();
  for (const size_t chunk : {1U, 2U, 3U, 7U}) {
    TestHost host;
    prepare(host);
    for (size_t row = 0; row < rows; row += chunk) {
      host.feed(vector.bars, row, std::min(row + chunk, rows));
      ASSERT_EQ(host.run(static_cast<uint32_t>(row)), success);
    }
    expect_equal_columns(all_columns(host), expected, "chunks of " + std::to_string(chunk));
  }
  for (size_t row = 0; row < rows; ++row) {
    ASSERT_EQ(full.run(static_cast<uint32_t>(row)), success);
    expect_equal_columns(all_columns(full), expected, "again from row " + std::to_string(row));
  }

  // The last bar forms: other values first, then the final ones.
  TestHost forming;
  prepare(forming);
  Bars moving = vector.bars;
  for (auto& [field, values] : moving) {
    if (!values.empty()) values.back() = values.back() * 2 + 1;
  }
  forming.feed(moving);
  ASSERT_EQ(forming.run(), success);
  forming.feed(vector.bars, rows == 0 ? 0 : rows - 1);
  ASSERT_EQ(forming.run(rows == 0 ? 0 : static_cast<uint32_t>(rows - 1)), success);
  expect_equal_columns(all_columns(forming), expected, "a bar that forms");
}

std::string test_name(const testing::TestParamInfo<Vector>& info) {
  std::string name = info.param.file + "_" + info.param.name;
  std::ranges::replace_if(
      name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; }, '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Vectors, VectorTest, testing::ValuesIn(load_vectors()), test_name);

}  // namespace
}  // namespace quor_test
