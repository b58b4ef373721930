#include "DSTZoneRules.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

namespace {

struct DSTRule {
  const char* name;
  std::int32_t id;
  const char* rule;
};

// The choices that users know; some are out of date for their region.
constexpr std::array<DSTRule, 15> DSTRulesData{{
    {"Not Set", 0, ""},
    {"Australia 2007 (ACT, South Australia, Tasmania, Victoria)", 1, "M10.5.0/02:00,M4.1.0/03:00"},
    {"Australia 2007 (New South Wales)", 2, "M10.5.0/02:00,M3.5.0/03:00"},
    {"Australia (Western Australia)", 3, "M10.5.0/02:00,M3.5.0/03:00"},
    {"Australia 2008+ (ACT, New South Wales, South Australia, Tasmania, Victoria)", 4,
     "M10.1.0/02:00,M4.1.0/03:00"},
    {"Brazil", 5, "M10.3.0/00:00,M2.3.0/00:00"},
    {"Canada", 6, "M3.2.0/02:00,M11.1.0/02:00"},
    {"Canada (Newfoundland)", 7, "M3.2.0/00:00,M11.1.0/00:00"},
    {"Europe (Portugal, United Kingdom)", 8, "M3.5.0/01:00,M10.5.0/02:00"},
    {"Europe (Austria, Belgium, Croatia, Denmark, France, Germany, Hungary, Italy, Luxembourg, "
     "Netherlands, Norway, Poland, Slovakia, Spain, Sweden, Switzerland)",
     9, "M3.5.0/02:00,M10.5.0/03:00"},
    {"Europe (Finland)", 10, "M3.5.0/03:00,M10.5.0/04:00"},
    {"Mexico", 11, "M4.1.0/02:00,M10.5.0/02:00"},
    {"United States", 12, "M3.2.0/02:00,M11.1.0/02:00"},
    {"New Zealand", 13, "M9.5.0/02:00,M4.1.0/03:00"},
    {"New Zealand (Chatham)", 14, "M9.5.0/02:45,M4.1.0/03:45"},
}};

const DSTRule* rowAt(int index) {
  const auto row = static_cast<std::size_t>(static_cast<unsigned int>(index));
  return row < DSTRulesData.size() ? &DSTRulesData[row] : nullptr;
}

}  // namespace

DSTZoneRules::~DSTZoneRules() = default;

// Settings store identifiers. They equal the row numbers today, but need not.
int DSTZoneRules::getDSTZoneListIndex(int id) const {
  const auto* const row = std::find_if(DSTRulesData.begin(), DSTRulesData.end(),
                                       [id](const DSTRule& rule) { return rule.id == id; });
  if (row == DSTRulesData.end()) return -1;
  return static_cast<int>(std::distance(DSTRulesData.begin(), row));
}

int DSTZoneRules::getDSTZoneId(int index) const {
  const DSTRule* const row = rowAt(index);
  return row != nullptr ? row->id : -1;
}

void DSTZoneRules::getDSTZoneName(int id, std::string& name) const {
  const DSTRule* const row = rowAt(getDSTZoneListIndex(id));
  name = row != nullptr ? row->name : "";
}

void DSTZoneRules::getDSTZoneRule(int id, std::string& rule) const {
  const DSTRule* const row = rowAt(getDSTZoneListIndex(id));
  rule = row != nullptr ? row->rule : "";
}

void DSTZoneRules::getDSTZoneList(std::string& list) const {
  list.clear();
  for (const DSTRule& row : DSTRulesData) {
    list += row.name;
    list += ';';
  }
}
