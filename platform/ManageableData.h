#pragma once

#include <map>
#include <string>
#include <vector>

class LocalMgmtIfc;

// A management record: the keys it is about (its roots) and one text value for each.
// A value type; not shared between threads.
class ManageableData {
 public:
  ManageableData();
  ~ManageableData();
  ManageableData(const ManageableData&);
  ManageableData& operator=(const ManageableData&);

  // The first root, or empty text when there is none.
  std::string getRootId() const;

  // Makes `key` the only root. The agent may be null: then the record belongs to no agent.
  void setRootId(const std::string& key, LocalMgmtIfc* agent);

  // Appends a root. The agent may be null.
  void addRootId(const std::string& key, LocalMgmtIfc* agent);

  // Stores the value of `key`, replacing an earlier one. Roots stay as they are.
  void populate(const std::string& key, const std::string& value);

  // The same for an item with a display name; `identifier` becomes the root if there is none.
  void populate(const std::string& identifier, const std::string& name, const std::string& value);

  // Copies the value of `key`. False, and `value` untouched, when there is none.
  bool interogate(const std::string& key, std::string& value) const;

 private:
  std::vector<std::string> m_roots;
  std::map<std::string, std::string> m_values;
  std::map<std::string, std::string> m_names;
};
