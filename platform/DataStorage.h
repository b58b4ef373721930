#pragma once

#include <memory>
#include <string>

class Context;

// Names of the settings schemas.
struct DASUtilsStrings {
  static const char* const ClockSettingsSchema;
};

// A service's view of the device's persistent settings, bound to one schema.
// Owner: the service. Thread: any. Each accepted setDataItem is durable when it returns.
class DataStorage {
 public:
  // The context outlives the object; `schema` names the group of settings (DASUtilsStrings).
  DataStorage(Context& context, const char* schema);
  ~DataStorage();
  DataStorage(const DataStorage&) = delete;
  DataStorage& operator=(const DataStorage&) = delete;

  // Finds the service "DataAccessServiceIfc" through the context. False when there is none: reads
  // are then empty and writes are refused.
  bool findDataAccessService();

  // Stores a value that XML can carry. False when it was not stored: the old value then remains.
  bool setDataItem(const std::string& key, const std::string& value);

  // One XML document with an element for each stored key of `keys` (separated by single spaces),
  // named as the key, holding the value as escaped text, in UTF-8, inside one enclosing element.
  // Keys without a value are left out; empty text on failure.
  std::string getDataItems(const std::string& keys);

 private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};
