#include "arrow.h"

#include <pybind11/numpy.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "row_keys.h"

namespace py = pybind11;

// The structures of the interface, as its specification lays them out.
extern "C" {

struct ArrowSchema {
  const char* format;
  const char* name;
  const char* metadata;
  int64_t flags;
  int64_t n_children;
  ArrowSchema** children;
  ArrowSchema* dictionary;
  void (*release)(ArrowSchema*);
  void* private_data;
};

struct ArrowArray {
  int64_t length;
  int64_t null_count;
  int64_t offset;
  int64_t n_buffers;
  int64_t n_children;
  const void** buffers;
  ArrowArray** children;
  ArrowArray* dictionary;
  void (*release)(ArrowArray*);
  void* private_data;
};

struct ArrowArrayStream {
  int (*get_schema)(ArrowArrayStream*, ArrowSchema*);
  int (*get_next)(ArrowArrayStream*, ArrowArray*);
  const char* (*get_last_error)(ArrowArrayStream*);
  void (*release)(ArrowArrayStream*);
  void* private_data;
};
}

namespace quor_python {
namespace {

/// What a producer fills in, given back whatever happens.
template <typename Structure>
struct Owned {
  Owned() = default;
  ~Owned() {
    if (value.release != nullptr) value.release(&value);
  }
  Owned(const Owned&) = delete;
  Owned& operator=(const Owned&) = delete;

  Structure value{};
};

/// A column of one batch with its nulls.
class ArrowCells {
 public:
  /// The rows of the batch may begin further down in its columns.
  ArrowCells(const ArrowArray& array, const ArrowArray& batch)
      : array_(array), size_(batch.length), first_(array.offset + batch.offset) {}
  /// All rows of a column that is in no batch.
  explicit ArrowCells(const ArrowArray& array)
      : array_(array), size_(array.length), first_(array.offset) {}

  /// The values whose numbers the cells are; null if they are values themselves.
  const ArrowArray* dictionary() const { return array_.dictionary; }
  int64_t size() const { return size_; }

  bool is_there(int64_t row) const {
    const auto* const bits = static_cast<const uint8_t*>(array_.buffers[0]);
    if (bits == nullptr || array_.null_count == 0) return true;
    const int64_t at = first_ + row;
    return (bits[at / 8] >> (at % 8) & 1) != 0;
  }

  template <typename Number>
  Number number(int64_t row) const {
    return static_cast<const Number*>(array_.buffers[1])[first_ + row];
  }

  bool bit(int64_t row) const {
    const int64_t at = first_ + row;
    return (static_cast<const uint8_t*>(array_.buffers[1])[at / 8] >> (at % 8) & 1) != 0;
  }

  template <typename Offset>
  std::string_view text(int64_t row) const {
    const auto* const offsets = static_cast<const Offset*>(array_.buffers[1]) + first_;
    const auto* const bytes = static_cast<const char*>(array_.buffers[2]);
    return {bytes + offsets[row], static_cast<size_t>(offsets[row + 1] - offsets[row])};
  }

  /// A text of up to 12 bytes stands in its view of 16; of a longer one this tells where.
  std::string_view viewed_text(int64_t row) const {
    const auto* const view = static_cast<const char*>(array_.buffers[1]) + 16 * (first_ + row);
    int32_t parts[4];
    std::memcpy(parts, view, sizeof parts);
    const auto& [length, start, buffer, offset] = parts;
    if (length <= 12) return {view + 4, static_cast<size_t>(length)};
    return {static_cast<const char*>(array_.buffers[2 + buffer]) + offset,
            static_cast<size_t>(length)};
  }

 private:
  const ArrowArray& array_;
  int64_t size_;
  int64_t first_;
};

using Batches = std::vector<ArrowCells>;

size_t rows_of(const Batches& batches) {
  size_t rows = 0;
  for (const ArrowCells& cells : batches) rows += static_cast<size_t>(cells.size());
  return rows;
}

/// What `read(cells, row)` gives; a cell that isn't there is null.
template <typename Read>
py::object numbers_by(const Batches& batches, const Read& read) {
  py::array_t<double> array(static_cast<py::ssize_t>(rows_of(batches)));
  double* out = array.mutable_data();
  for (const ArrowCells& cells : batches) {
    for (int64_t row = 0; row < cells.size(); ++row) {
      *out++ = cells.is_there(row) ? read(cells, row) : std::numeric_limits<double>::quiet_NaN();
    }
  }
  return array;
}

template <typename Number>
py::object numbers(const Batches& batches) {
  return numbers_by(batches, [](const ArrowCells& cells, int64_t row) {
    return static_cast<double>(cells.number<Number>(row));
  });
}

py::object bits(const Batches& batches) {
  return numbers_by(
      batches, [](const ArrowCells& cells, int64_t row) { return cells.bit(row) ? 1.0 : 0.0; });
}

/// Whole numbers may be dates, 20240102, so that they stay whole where none is null.
template <typename Number>
py::object integers(const Batches& batches) {
  for (const ArrowCells& cells : batches) {
    for (int64_t row = 0; row < cells.size(); ++row) {
      if (!cells.is_there(row)) return numbers<Number>(batches);
    }
  }
  py::array_t<int64_t> array(static_cast<py::ssize_t>(rows_of(batches)));
  int64_t* out = array.mutable_data();
  for (const ArrowCells& cells : batches) {
    for (int64_t row = 0; row < cells.size(); ++row) {
      *out++ = static_cast<int64_t>(cells.number<Number>(row));
    }
  }
  return array;
}

template <typename Number>
py::object times(const Batches& batches, const char* unit) {
  py::array_t<int64_t> array(static_cast<py::ssize_t>(rows_of(batches)));
  int64_t* out = array.mutable_data();
  for (const ArrowCells& cells : batches) {
    for (int64_t row = 0; row < cells.size(); ++row) {
      *out++ = cells.is_there(row) ? int64_t{cells.number<Number>(row)} : no_time;
    }
  }
  return array.attr("view")(std::string("datetime64[") + unit + "]");
}

template <typename Read>
py::object texts_by(const Batches& batches, const Read& read) {
  py::list list;
  for (const ArrowCells& cells : batches) {
    for (int64_t row = 0; row < cells.size(); ++row) {
      if (!cells.is_there(row)) {
        list.append(py::none());
        continue;
      }
      const std::string_view text = read(cells, row);
      list.append(py::str(text.data(), text.size()));
    }
  }
  return py::module_::import("numpy").attr("array")(list, "object");
}

template <typename Offset>
py::object texts(const Batches& batches) {
  return texts_by(batches,
                  [](const ArrowCells& cells, int64_t row) { return cells.text<Offset>(row); });
}

py::object viewed_texts(const Batches& batches) {
  return texts_by(batches,
                  [](const ArrowCells& cells, int64_t row) { return cells.viewed_text(row); });
}

struct Type {
  std::string_view format;
  py::object (*read)(const Batches&);
};

constexpr Type types[] = {
    {"g", numbers<double>},
    {"f", numbers<float>},
    {"b", bits},
    {"c", integers<int8_t>},
    {"C", integers<uint8_t>},
    {"s", integers<int16_t>},
    {"S", integers<uint16_t>},
    {"i", integers<int32_t>},
    {"I", integers<uint32_t>},
    {"l", integers<int64_t>},
    {"L", numbers<uint64_t>},
    {"u", texts<int32_t>},
    {"U", texts<int64_t>},
    {"vu", viewed_texts},
    {"tdD", [](const Batches& batches) { return times<int32_t>(batches, "D"); }},
    {"tdm", [](const Batches& batches) { return times<int64_t>(batches, "ms"); }},
    {"tss:", [](const Batches& batches) { return times<int64_t>(batches, "s"); }},
    {"tsm:", [](const Batches& batches) { return times<int64_t>(batches, "ms"); }},
    {"tsu:", [](const Batches& batches) { return times<int64_t>(batches, "us"); }},
    {"tsn:", [](const Batches& batches) { return times<int64_t>(batches, "ns"); }},
};

/// The column, and the zone of its times behind it where there is one.
py::object column(std::string_view format, const Batches& batches) {
  for (const Type& type : types) {
    const bool is_moment = type.format.ends_with(':');
    if (is_moment ? !format.starts_with(type.format) : format != type.format) continue;
    py::object values = type.read(batches);
    const std::string_view zone = is_moment ? format.substr(type.format.size()) : "";
    if (zone.empty()) return values;
    return py::make_tuple(values, py::str(zone.data(), zone.size()));
  }
  return py::none();
}

/// What stands for a null among such values.
py::object null_among(const py::object& values) {
  const auto kind = values.attr("dtype").attr("kind").cast<std::string>();
  if (kind == "O") return py::list(py::make_tuple(py::none()));
  if (kind == "M") return py::module_::import("numpy").attr("datetime64")("NaT");
  return py::float_(std::numeric_limits<double>::quiet_NaN());
}

/// Values that stand once in a dictionary, of which each batch has its own.
py::object decoded(const ArrowSchema& type, const Batches& batches) {
  const py::module_ numpy = py::module_::import("numpy");
  py::list parts;
  parts.append(column(type.dictionary->format, {}));
  for (const ArrowCells& cells : batches) {
    const py::object values = column(type.dictionary->format, {ArrowCells(*cells.dictionary())});
    if (!py::isinstance<py::array>(values)) return py::none();
    const py::object with_null = numpy.attr("append")(values, null_among(values));
    const py::object places =
        numpy.attr("nan_to_num")(column(type.format, {cells}), py::arg("nan") = py::len(values));
    parts.append(with_null.attr("take")(places.attr("astype")("int64")));
  }
  return numpy.attr("concatenate")(parts);
}

[[noreturn]] void fail(ArrowArrayStream& stream) {
  const char* const text = stream.get_last_error(&stream);
  throw py::value_error(text == nullptr ? "the frame can't be read" : text);
}

}  // namespace

py::list read_arrow(const py::capsule& capsule) {
  auto& stream =
      *static_cast<ArrowArrayStream*>(PyCapsule_GetPointer(capsule.ptr(), "arrow_array_stream"));
  Owned<ArrowSchema> schema;
  if (stream.get_schema(&stream, &schema.value) != 0) fail(stream);
  std::vector<std::unique_ptr<Owned<ArrowArray>>> batches;
  while (true) {
    batches.push_back(std::make_unique<Owned<ArrowArray>>());
    if (stream.get_next(&stream, &batches.back()->value) != 0) fail(stream);
    if (batches.back()->value.release != nullptr) continue;
    batches.pop_back();
    break;
  }
  py::list list;
  for (int64_t number = 0; number < schema.value.n_children; ++number) {
    const ArrowSchema& type = *schema.value.children[number];
    Batches cells;
    for (const auto& batch : batches) {
      cells.emplace_back(*batch->value.children[number], batch->value);
    }
    list.append(py::make_tuple(
        type.name == nullptr ? "" : type.name,
        type.dictionary == nullptr ? column(type.format, cells) : decoded(type, cells)));
  }
  return list;
}

}  // namespace quor_python
