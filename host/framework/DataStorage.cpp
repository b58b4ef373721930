#include "DataStorage.h"

#include <sstream>

#include "Context.h"
#include "Executable.h"
#include "Logging.h"
#include "base/LogLevels.h"
#include "framework/DataAccess.h"
#include "framework/XmlText.h"

// On disk: the schema under which the store keeps the clock's settings.
const char* const DASUtilsStrings::ClockSettingsSchema = "ClockSettings";

namespace {

constexpr const char* kServiceName = "DataAccessServiceIfc";

thread_local std::uint64_t t_failedWrites = 0;

void logUnusable(const std::string& key, const char* action) {
  logAppUni("clockhost", host::kLogWarning, __FILE__, __LINE__,
            "setting \"%s\" %s: XML cannot carry it", key.c_str(), action);
}

}  // namespace

struct DataStorage::Impl {
  Context& context;
  std::string schema;
  host::DataAccess* access;

  // Empty for a key without a value, or with one from another program that XML cannot carry, so
  // that the other keys stay readable.
  std::string elementOf(const std::string& key) const {
    if (!host::isXmlName(key)) return {};
    const auto value = access->getItem(schema, key);
    if (!value) return {};
    if (!host::isXmlText(*value)) {
      logUnusable(key, "left out");
      return {};
    }
    return "<" + key + ">" + host::escapedXmlText(*value) + "</" + key + ">";
  }
};

DataStorage::DataStorage(Context& context, const char* schema)
    : m_impl(std::make_unique<Impl>(Impl{context, schema == nullptr ? "" : schema, nullptr})) {}

DataStorage::~DataStorage() = default;

bool DataStorage::findDataAccessService() {
  m_impl->access = dynamic_cast<host::DataAccess*>(m_impl->context.getService(kServiceName));
  return m_impl->access != nullptr;
}

// Refuses a value that could be stored but not read back: an accepted value must survive a restart.
bool DataStorage::setDataItem(const std::string& key, const std::string& value) {
  if (m_impl->access == nullptr) return false;
  if (!host::isXmlName(key) || !host::isXmlText(value)) {
    logUnusable(key, "refused");
    return false;
  }
  if (m_impl->access->setItem(m_impl->schema, key, value)) return true;
  ++t_failedWrites;
  return false;
}

std::string DataStorage::getDataItems(const std::string& keys) {
  if (m_impl->access == nullptr) return {};
  std::string document = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><Settings>";
  std::istringstream words(keys);
  for (std::string key; std::getline(words, key, ' ');) document += m_impl->elementOf(key);
  return document + "</Settings>";
}

std::uint64_t host::failedWritesHere() {
  return t_failedWrites;
}
