// Calls that the library takes and that give nothing their author can use.
#include <algorithm>

#include "letters.h"
#include "values.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

class WordCheck {
 public:
  WordCheck(const Reading& reading, const Statement& statement, std::vector<Problem>& out)
      : reading_(reading), statement_(statement), out_(out) {}

  void check(const Call& call) {
    if (call.close == absent) return;
    const std::string& text = word(call);
    if (is_field(text) && !is_function(text)) check_field(call);
    if (text == "IFF" || text == "IFN") check_last_value(call);
    if (text == "SET") check_set(call);
    if (text == "CODELIKE") check_code(call);
    if (text == "SOUND" || text == "PLAYSOUND") check_sound(call);
  }

 private:
  const std::string& word(const Call& call) const { return statement_.tokens[call.word].text; }
  Place place_of_call(const Call& call) const {
    return {statement_.tokens[call.word].begin, statement_.tokens[call.close].end};
  }
  std::string text(Range range) const { return reading_.text(statement_, range); }

  void add(Place place, std::string sentence, std::string suggestion) {
    out_.push_back({place, std::move(sentence), std::move(suggestion)});
  }

  /// CLOSE(1), and DELTA(C,1), which is a figure of options.
  void check_field(const Call& call) {
    const std::string field = reading_.text(place_of(statement_.tokens[call.word]));
    std::string suggestion;
    if (call.arguments.size() == 1) {
      suggestion = "for an earlier bar write REF(" + field + "," + text(call.arguments[0]) + ")";
    } else if (call.arguments.size() == 2) {
      const std::string series = text(call.arguments[0]);
      suggestion =
          "for a change write " + series + "-REF(" + series + "," + text(call.arguments[1]) + ")";
    }
    add(place_of_call(call), field + " is a bar field, which takes no arguments",
        std::move(suggestion));
  }

  void check_last_value(const Call& call) {
    const size_t count = call.arguments.size();
    if (count == 0 || count % 2 == 1) return;
    add(place_of_call(call),
        word(call) + " lacks its last value, for bars at which no condition decides",
        "write " + word(call) + " with 3, 5, 7 ... arguments: a last one behind the others");
  }

  /// Targets stand at even places.
  void check_set(const Call& call) {
    for (size_t i = 0; i < call.arguments.size(); i += 2) {
      const Range target = call.arguments[i];
      if (target.empty()) return;
      const Token* const name = lone_token(statement_, target);
      const auto line = name == nullptr ? reading_.lines.end() : reading_.lines.find(name->text);
      if (line != reading_.lines.end() && line->second < statement_.number) continue;
      add(place_of(statement_, target),
          "SET writes into a line that is declared above, and " + text(target) + " is none",
          "declare one, such as X:=C; and write SET(X,...)");
      return;
    }
    if (call.arguments.size() % 2 == 1) {
      add(place_of_call(call), "SET lacks the value for " + text(call.arguments.back()),
          "write SET(" + text(call.arguments.back()) + ",value)");
      return;
    }
    if (!statement_.is_named()) return;
    add(place_of(statement_.tokens[call.word]),
        "SET gives no number, so that " + statement_.name + " is 0",
        "write " + text({call.word, call.close + 1}) + "; without a name in front");
  }

  void check_code(const Call& call) {
    if (call.arguments.size() != 1) return;
    const Token* const code = lone_token(statement_, call.arguments[0]);
    if (code == nullptr || code->kind != TokenKind::number) return;
    add(place_of(*code), "CODELIKE compares with a text, in single quotes",
        "write '" + code->text + "'");
  }

  void check_sound(const Call& call) {
    if (call.arguments.empty()) return;
    const Token* const sound = lone_token(statement_, call.arguments.back());
    if (sound == nullptr || sound->kind != TokenKind::text) return;
    const std::string& letter = sound->text;
    if (letter.size() == 3 && letter[1] >= 'A' && letter[1] <= 'J') return;
    add(place_of(*sound), "there is no sound " + letter + ", the first one is played",
        "the sounds are 'A' to 'J', in capitals");
  }

  const Reading& reading_;
  const Statement& statement_;
  std::vector<Problem>& out_;
};

}  // namespace

void warn_of_words(const Reading& reading, const Statement& statement, std::vector<Problem>& out) {
  WordCheck check(reading, statement, out);
  for (const Call& call : statement.calls) check.check(call);
}

}  // namespace quor_advice
