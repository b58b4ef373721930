#pragma once

#include <string>

// The daylight-saving zones that a user can choose from: a fixed table of fifteen rows, each an
// identifier (kept in the settings), a display name and a POSIX TZ rule ("M3.5.0/02:00,...", see
// POSIX.1-2017, 8.3). A list of choices, not a time-zone database.
// Owner: the service. Thread: any; there is no state.
class DSTZoneRules {
 public:
  DSTZoneRules() = default;
  virtual ~DSTZoneRules();

  // The row of the identifier, 0-14, or -1.
  int getDSTZoneListIndex(int id) const;

  // The identifier of the row, or -1 when `index` is outside 0-14.
  int getDSTZoneId(int index) const;

  // The zone's name, or its rule (empty for "Not Set"); empty for an unknown identifier.
  void getDSTZoneName(int id, std::string& name) const;
  void getDSTZoneRule(int id, std::string& rule) const;

  // Every name in table order, each followed by ";".
  void getDSTZoneList(std::string& list) const;
};
