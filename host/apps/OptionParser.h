#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <functional>
#include <iosfwd>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// One option of a program: what a person types, and where its value goes.
struct Option {
  // Uses the value, empty for a flag. Returns an error text, empty if the value is valid; a
  // UsageError passes unchanged.
  using Take = std::function<std::string(const std::string& value)>;

  std::string_view name;   // "--socket"
  std::string_view value;  // in the help: "FILE", "up|down"; empty: a flag
  std::string_view help;
  Take take;                   // empty for --help and --version
  std::string shownDefault{};  // empty: none
  bool manyValues = false;     // all words up to the next option
  bool given = false;          // set by read()
  std::string_view letter{};   // "-f", another name; empty: none
};

struct ExitStatus {
  int status;
  std::string_view meaning;
};

// Reads a decimal number. Returns an error text, empty if it is from `least` to `most`.
[[nodiscard]] std::string readNumber(const std::string& text, std::uint64_t least,
                                     std::uint64_t most, std::uint64_t& number);

// The options of a program, with --help and --version: reads them, and is the table from which
// help, manual page and completion are made. The last of two options of one name counts, so that
// the options of a script can be overridden. Owner: its creator; what the options refer to outlives
// it. Thread: one.
class OptionParser {
 public:
  struct Program {
    std::string_view name;
    std::string_view description;
    std::string_view arguments;  // in the usage, after the options; empty: only options are taken
    std::span<const ExitStatus> statuses;
  };
  enum class Request { run, help, version };

  explicit OptionParser(const Program& program);

  // The result stays valid while the parser does.
  Option& add(Option option);
  Option& addFlag(std::string_view name, std::string_view help, bool& flag);
  Option& addPath(std::string_view name, std::string_view help, std::filesystem::path& path,
                  std::string_view value = "FILE");  // which must not be empty

  // A decimal number from `least` to `most`, which `number` can hold.
  template <typename Number>
  Option& addNumber(std::string_view name, std::string_view value, std::string_view help,
                    Number& number, std::uint64_t least, std::uint64_t most) {
    return add({name, value, help,
                [&number, least, most](const std::string& text) {
                  std::uint64_t read = 0;
                  std::string error = readNumber(text, least, most, read);
                  if (error.empty()) number = static_cast<Number>(read);
                  return error;
                },
                std::to_string(number)});
  }

  // Reads the command line. Options and arguments may alternate, up to a word "--"; after the first
  // argument, a word that is no option is an argument, even if it begins with "-". Throws
  // UsageError, one line.
  [[nodiscard]] Request read(std::span<const std::string> words);

  // The same for a program whose help is that of its options, which it then prints on `out`.
  // Whether the program is to run.
  [[nodiscard]] bool readToRun(std::span<const std::string> words, std::ostream& out);

  [[nodiscard]] bool given(std::string_view name) const;
  [[nodiscard]] const std::vector<std::string>& arguments() const { return m_arguments; }

  [[nodiscard]] const Program& program() const { return m_program; }
  [[nodiscard]] const std::deque<Option>& options() const { return m_options; }
  [[nodiscard]] std::string help() const;

 private:
  using Words = std::span<const std::string>;

  void readWord(Words& words);
  void readOption(Option& option, const std::string& word, Words& words);
  void readValues(Option& option, Words& words);
  void use(Option& option, const std::string& value);
  [[nodiscard]] Option* optionOf(std::string_view word);
  [[noreturn]] void refuse(const std::string& error) const;
  [[noreturn]] void refuseUnknown(const std::string& word) const;

  const Program m_program;
  std::deque<Option> m_options;
  std::vector<std::string> m_arguments;
  Request m_request = Request::run;
};

// "--socket FILE", "-h, --help"
[[nodiscard]] std::string usageOf(const Option& option);

// What is wrong with the path, empty for nothing.
[[nodiscard]] std::string checkPath(const std::string& text);

}  // namespace host
