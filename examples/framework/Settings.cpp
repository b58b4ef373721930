#include "Settings.h"

#include <sstream>

#include "DataStorage.h"

namespace example {
namespace {

std::string escaped(const std::string& text) {
  static const std::map<char, const char*> special{
      {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'\r', "&#13;"}};
  std::string result;
  for (const char c : text) {
    const auto found = special.find(c);
    found == special.end() ? result.append(1, c) : result.append(found->second);
  }
  return result;
}

}  // namespace

void Settings::set(const std::string& key, const std::string& value) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  m_values[key] = value;
}

std::string Settings::elementOf(const std::string& key) const {
  const std::lock_guard<std::mutex> lock(m_mutex);
  const auto found = m_values.find(key);
  if (found == m_values.end()) return {};
  return "<" + key + ">" + escaped(found->second) + "</" + key + ">";
}

}  // namespace example

const char* const DASUtilsStrings::ClockSettingsSchema = "ClockSettings";

// The clock is the only service here, so its schema is not told apart from others.
struct DataStorage::Impl {
  Context& context;
  example::Settings* settings;
};

DataStorage::DataStorage(Context& context, const char* /*schema*/)
    : m_impl(std::make_unique<Impl>(Impl{context, nullptr})) {}

DataStorage::~DataStorage() = default;

bool DataStorage::findDataAccessService() {
  Executable* const service = m_impl->context.getService("DataAccessServiceIfc");
  m_impl->settings = dynamic_cast<example::Settings*>(service);
  return m_impl->settings != nullptr;
}

bool DataStorage::setDataItem(const std::string& key, const std::string& value) {
  if (m_impl->settings == nullptr) return false;
  m_impl->settings->set(key, value);
  return true;
}

std::string DataStorage::getDataItems(const std::string& keys) {
  if (m_impl->settings == nullptr) return {};
  std::string document = "<Settings>";
  std::istringstream words(keys);
  for (std::string key; words >> key;) document += m_impl->settings->elementOf(key);
  return document + "</Settings>";
}
