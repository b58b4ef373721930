#include "simulation/model/ZoneTable.h"

namespace simulation {

const std::array<ZoneRow, 15> kZones{{
    {"Not Set", ""},
    {"Australia 2007 (ACT, South Australia, Tasmania, Victoria)", "M10.5.0/02:00,M4.1.0/03:00"},
    {"Australia 2007 (New South Wales)", "M10.5.0/02:00,M3.5.0/03:00"},
    {"Australia (Western Australia)", "M10.5.0/02:00,M3.5.0/03:00"},
    {"Australia 2008+ (ACT, New South Wales, South Australia, Tasmania, Victoria)",
     "M10.1.0/02:00,M4.1.0/03:00"},
    {"Brazil", "M10.3.0/00:00,M2.3.0/00:00"},
    {"Canada", "M3.2.0/02:00,M11.1.0/02:00"},
    {"Canada (Newfoundland)", "M3.2.0/00:00,M11.1.0/00:00"},
    {"Europe (Portugal, United Kingdom)", "M3.5.0/01:00,M10.5.0/02:00"},
    {"Europe (Austria, Belgium, Croatia, Denmark, France, Germany, Hungary, Italy, Luxembourg, "
     "Netherlands, Norway, Poland, Slovakia, Spain, Sweden, Switzerland)",
     "M3.5.0/02:00,M10.5.0/03:00"},
    {"Europe (Finland)", "M3.5.0/03:00,M10.5.0/04:00"},
    {"Mexico", "M4.1.0/02:00,M10.5.0/02:00"},
    {"United States", "M3.2.0/02:00,M11.1.0/02:00"},
    {"New Zealand", "M9.5.0/02:00,M4.1.0/03:00"},
    {"New Zealand (Chatham)", "M9.5.0/02:45,M4.1.0/03:45"},
}};

}  // namespace simulation
