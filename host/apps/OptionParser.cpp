#include "apps/OptionParser.h"

#include <memory>
#include <utility>

#include "base/PrintableText.h"
#include "verbs/UsageError.h"

namespace host {
namespace {

constexpr std::size_t kLongestError = 300;  // bytes of CLI11's text, which repeats the user's input

// Each option with the type of its value, what it means, and its default.
class HelpFormat : public CLI::Formatter {
 public:
  explicit HelpFormat(std::string arguments) : m_arguments(std::move(arguments)) {}

  std::string make_usage(const CLI::App* /*app*/, std::string name) const override {
    return "\nUsage: " + name + " [OPTIONS]" + m_arguments + '\n';
  }
  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string type = option->get_type_name();
    return type.empty() ? "" : ' ' + type;
  }
  std::string make_option_desc(const CLI::Option* option) const override {
    const std::string value = option->get_default_str();
    return option->get_description() + (value.empty() ? "" : " (default: " + value + ')');
  }

 private:
  const std::string m_arguments;
};

}  // namespace

OptionParser::OptionParser(const std::string& program, const std::string& description,
                           const std::string& arguments)
    : CLI::App(description, program) {
  formatter(std::make_shared<HelpFormat>(arguments.empty() ? "" : ' ' + arguments));
  set_help_flag("-h,--help", "Print this help and exit");
  set_version_flag("--version", CLOCK_VERSION, "Print the version and exit");
  option_defaults()->always_capture_default()->multi_option_policy(
      CLI::MultiOptionPolicy::TakeLast);
}

// The check of an option returns what is wrong, and CLI11 adds the option's name.
CLI::Option* OptionParser::addPath(const char* name, std::filesystem::path& path, const char* help,
                                   const char* type) {
  return add_option(name, path, help)->type_name(type)->check([](const std::string& text) {
    return text.empty() ? std::string("the path is empty; name a file or folder") : "";
  });
}

bool OptionParser::read(std::span<const std::string> words, std::ostream& out) {
  try {
    parse(std::vector<std::string>(words.rbegin(), words.rend()));
    return true;
  } catch (const CLI::Success& request) {
    exit(request, out, out);
    return false;
  } catch (const CLI::ParseError& error) {
    throw UsageError(clippedText(error.what(), kLongestError) + "; `" + get_name() +
                     " --help` lists the options");
  }
}

}  // namespace host
