#include "core/lowering.h"

#include <cmath>
#include <optional>

namespace quor {
namespace {

/// By operator precedence, with a stack of operators and one of operands.
class Lowering {
 public:
  explicit Lowering(const std::vector<MathElement>& elements) : elements_(elements) {}

  Program run() {
    if (elements_.empty()) return std::move(program_);
    if (elements_.size() == 2 && elements_[0].kind == ElementKind::reference) {
      return std::move(end(Ending::value, operand_of(elements_[0])));
    }
    size_t at = 0;
    while (!ended_ && at < elements_.size()) at += walk(at);
    if (!ended_) finish();
    program_.partials.resize(partial_count_);
    return std::move(program_);
  }

 private:
  /// The op code on top of the operator stack; none at its bottom.
  std::optional<OpCode> top() const {
    return operators_.empty() ? std::nullopt : std::optional(operators_.back());
  }

  static Operand number(double value) { return {Operand::Source::number, 0, value, nullptr}; }

  static Operand operand_of(const MathElement& element) {
    if (element.kind != ElementKind::reference) return number(element.value);
    const bool field = element.variable->kind == VariableKind::field;
    return {field ? Operand::Source::field : Operand::Source::reference, 0, 0.0, element.variable};
  }

  Program& end(Ending ending, Operand result) {
    ended_ = true;
    program_.ending = ending;
    program_.result = result;
    return program_;
  }

  /// Takes the element at `at`; gives how many elements it consumed.
  size_t walk(size_t at) {
    const MathElement& element = elements_[at];
    switch (element.kind) {
      case ElementKind::number:
      case ElementKind::reference:
        operands_.push_back(operand_of(element));
        return 1;
      case ElementKind::end:
        if (!top()) return elements_.size();
        reduce();
        return 0;
      case ElementKind::operation:
        return walk_operator(static_cast<OpCode>(element.value), at);
    }
    return 1;
  }

  size_t walk_operator(OpCode code, size_t at) {
    switch (code) {
      case op_unary_plus:
        return 1;
      case op_open:
        operators_.push_back(code);
        return 1;
      case op_close:
        if (top() != op_open) {
          reduce();
          return 0;
        }
        operators_.pop_back();
        return 1;
      case op_unary_minus:
        return negate(elements_[at + 1]);
      default:
        break;
    }
    const bool shift = !top() || top() == op_open || operator_rank(code) > operator_rank(*top());
    if (!shift) {
      reduce();
      return 0;
    }
    operators_.push_back(code);
    return 1;
  }

  size_t negate(const MathElement& next) {
    if (next.kind == ElementKind::operation) {
      operands_.push_back(number(0.0));
      operators_.push_back(op_unary_minus);
      return 1;
    }
    if (next.kind == ElementKind::end) {
      end(Ending::missing_variable, {});
    } else if (next.kind == ElementKind::number) {
      operands_.push_back(number(-next.value));
    } else {
      Step step;
      step.kind = Step::Kind::negate;
      step.right = operand_of(next);
      push_result_of(step);
    }
    return 2;
  }

  void push_result_of(Step& step) {
    step.partial = partial_count_++;
    operands_.push_back({Operand::Source::partial, step.partial, 0.0, nullptr});
    program_.steps.push_back(step);
  }

  void reduce() {
    if (operands_.empty()) {
      end(Ending::value, number(0.0));
      return;
    }
    const std::optional<OpCode> op = top();
    Step step;
    step.right = operands_.back();
    // A ")" may meet the bottom of the operator stack; it never pops it.
    if (operands_.size() < 2 || !op) {
      step.kind = Step::Kind::discard;
      program_.steps.push_back(step);
      end(Ending::missing_operand, {});
      return;
    }
    operators_.pop_back();
    operands_.pop_back();
    step.left = operands_.back();
    operands_.pop_back();
    step.op = *op;
    if (step.op == op_divide && step.right.source == Operand::Source::number) {
      multiply_instead(step);
    }
    push_result_of(step);
  }

  /// By a power of two, a product with its reciprocal is the quotient bit for bit, and takes a
  /// fraction of the time.
  static void multiply_instead(Step& step) {
    int exponent = 0;
    const bool is_power = std::fabs(std::frexp(step.right.number, &exponent)) == 0.5;
    // Division by what is near 0 gives 0; reciprocals of the largest numbers lose bits.
    constexpr int least = -30;
    constexpr int most = 1000;
    if (!is_power || exponent < least || exponent > most) return;
    step.op = op_times;
    step.right.number = 1.0 / step.right.number;
  }

  void finish() {
    if (operands_.empty()) {
      end(Ending::value, number(0.0));
      return;
    }
    const Operand& last = operands_.back();
    const bool bare = operands_.size() == 1 && last.variable != nullptr &&
                      last.variable->kind == VariableKind::expression &&
                      !last.variable->is_draw_null();
    end(bare ? Ending::bare_reference : Ending::value, last);
  }

  const std::vector<MathElement>& elements_;
  Program program_;
  std::vector<OpCode> operators_;
  std::vector<Operand> operands_;
  uint32_t partial_count_ = 0;
  bool ended_ = false;
};

}  // namespace

Program lower(const std::vector<MathElement>& elements) { return Lowering(elements).run(); }

void set_elements(Variable& variable, std::vector<MathElement> list) {
  variable.elements = std::move(list);
  variable.program = lower(variable.elements);
}

}  // namespace quor
