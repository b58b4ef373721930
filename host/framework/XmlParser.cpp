#include "XmlParser.h"

#include <expat.h>

#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

static_assert(sizeof(XML_Char) == sizeof(char), "expat passes UTF-8");

namespace {

struct Callbacks {
  void* userData;
  XmlParser::StartElement start;
  XmlParser::EndElement end;
  XmlParser::CharacterData characterData;
};

using Expat = std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)>;

// Parses one document with expat.
class Parse {
 public:
  explicit Parse(const Callbacks& callbacks)
      : m_callbacks(callbacks), m_expat(XML_ParserCreate(nullptr), &XML_ParserFree) {
    if (!m_expat) return;
    XML_SetUserData(m_expat.get(), this);
    XML_SetElementHandler(m_expat.get(), &onStart, &onEnd);
    XML_SetCharacterDataHandler(m_expat.get(), &onText);
    // Refuses document types: settings documents have none, and they can declare entities that grow
    // exponentially.
    XML_SetStartDoctypeDeclHandler(m_expat.get(), &onDoctype);
  }
  Parse(const Parse&) = delete;
  Parse& operator=(const Parse&) = delete;

  bool run(const char* document, int length) {
    if (!m_expat) return false;
    const bool parsed = XML_Parse(m_expat.get(), document, length, XML_TRUE) == XML_STATUS_OK;
    if (m_thrown) std::rethrow_exception(m_thrown);
    return parsed;
  }

 private:
  static Parse& of(void* userData) { return *static_cast<Parse*>(userData); }

  // Exceptions must not pass through expat, which is C.
  template <class Step>
  void guarded(Step step) {
    if (m_thrown) return;
    try {
      step();
    } catch (...) {
      m_thrown = std::current_exception();
      XML_StopParser(m_expat.get(), XML_FALSE);
    }
  }

  static void onStart(void* userData, const XML_Char* name, const XML_Char** attributes) {
    Parse& parse = of(userData);
    parse.guarded([&] {
      parse.m_texts.emplace_back();
      if (parse.m_callbacks.start == nullptr) return;
      parse.m_callbacks.start(parse.m_callbacks.userData, name, attributes);
    });
  }

  static void onText(void* userData, const XML_Char* text, int length) {
    Parse& parse = of(userData);
    parse.guarded([&] { parse.m_texts.back().append(text, static_cast<std::size_t>(length)); });
  }

  static void onEnd(void* userData, const XML_Char* name) {
    Parse& parse = of(userData);
    parse.guarded([&] { parse.endElement(name); });
  }

  static void onDoctype(void* userData, const XML_Char* /*name*/, const XML_Char* /*system*/,
                        const XML_Char* /*publicId*/, int /*hasInternalSubset*/) {
    XML_StopParser(of(userData).m_expat.get(), XML_FALSE);
  }

  void endElement(const char* name) {
    const std::string text = std::move(m_texts.back());
    m_texts.pop_back();
    if (!text.empty() && m_callbacks.characterData != nullptr) {
      // Never longer than the document.
      m_callbacks.characterData(m_callbacks.userData, text.data(), static_cast<int>(text.size()));
    }
    if (m_callbacks.end != nullptr) m_callbacks.end(m_callbacks.userData, name);
  }

  const Callbacks m_callbacks;
  const Expat m_expat;
  std::vector<std::string> m_texts;  // of the open elements, innermost last
  std::exception_ptr m_thrown;
};

}  // namespace

struct XmlParser::Impl {
  Callbacks callbacks;
};

XmlParser::XmlParser(void* userData, StartElement start, EndElement end,
                     CharacterData characterData)
    : m_impl(std::make_unique<Impl>(Impl{{userData, start, end, characterData}})) {}

XmlParser::~XmlParser() = default;

bool XmlParser::parseMessage(const char* document, int length) {
  if (document == nullptr || length < 0) return false;
  return Parse(m_impl->callbacks).run(document, length);
}
