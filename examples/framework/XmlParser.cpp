// Reads what DataStorage writes: elements and their text. Refuses attributes, comments and
// declarations. A framework that has an XML library uses that instead.
#include "XmlParser.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

struct XmlParser::Impl {
  void* userData;
  StartElement start;
  EndElement end;
  CharacterData characterData;

  std::vector<std::pair<std::string, std::string>> open;  // the open elements: name, text so far
  bool hasRoot;

  bool takeText(const std::string& raw);
  bool takeTag(const std::string& tag);
  bool close(const std::string& name);
};

namespace {

// Replaces the references of `raw`: "&amp;" becomes '&'. False for an unknown one.
bool decode(const std::string& raw, std::string& text) {
  static const std::vector<std::pair<std::string, char>> references{
      {"&amp;", '&'},  {"&lt;", '<'},    {"&gt;", '>'},
      {"&quot;", '"'}, {"&apos;", '\''}, {"&#13;", '\r'}};
  for (std::size_t at = 0; at < raw.size();) {
    const auto found =
        std::find_if(references.begin(), references.end(), [&](const auto& reference) {
          return raw.compare(at, reference.first.size(), reference.first) == 0;
        });
    if (raw[at] == '&' && found == references.end()) return false;
    text += raw[at] == '&' ? found->second : raw[at];
    at += raw[at] == '&' ? found->first.size() : 1;
  }
  return true;
}

bool isName(const std::string& text) {
  return !text.empty() && text.find_first_of(" \t\r\n/&!?\"'=") == std::string::npos;
}

}  // namespace

bool XmlParser::Impl::takeText(const std::string& raw) {
  if (!open.empty()) return decode(raw, open.back().second);
  return raw.find_first_not_of(" \t\r\n") == std::string::npos;
}

bool XmlParser::Impl::takeTag(const std::string& tag) {
  if (!tag.empty() && tag.front() == '/') return close(tag.substr(1));
  if (!isName(tag) || (hasRoot && open.empty())) return false;
  hasRoot = true;
  const char* noAttributes = nullptr;
  start(userData, tag.c_str(), &noAttributes);
  open.emplace_back(tag, "");
  return true;
}

bool XmlParser::Impl::close(const std::string& name) {
  if (open.empty() || open.back().first != name) return false;
  const std::string text = open.back().second;
  open.pop_back();
  if (!text.empty()) characterData(userData, text.data(), static_cast<int>(text.size()));
  end(userData, name.c_str());
  return true;
}

XmlParser::XmlParser(void* userData, StartElement start, EndElement end,
                     CharacterData characterData)
    : m_impl(std::make_unique<Impl>(Impl{userData, start, end, characterData, {}, false})) {}

XmlParser::~XmlParser() = default;

bool XmlParser::parseMessage(const char* document, int length) {
  const std::string all(document, static_cast<std::size_t>(std::max(length, 0)));
  m_impl->open.clear();
  m_impl->hasRoot = false;
  for (std::size_t at = 0;;) {
    const std::size_t tag = all.find('<', at);
    if (!m_impl->takeText(all.substr(at, tag - at))) return false;
    if (tag == std::string::npos) return m_impl->hasRoot && m_impl->open.empty();
    const std::size_t last = all.find('>', tag);
    if (last == std::string::npos || !m_impl->takeTag(all.substr(tag + 1, last - tag - 1)))
      return false;
    at = last + 1;
  }
}
