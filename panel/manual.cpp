#include "PanelOptions.h"
#include "manual/ManPage.h"
#include "manual/ManualFiles.h"

int main(int argc, char** argv) {
  return host::writeManuals(
      {argv + 1, argv + argc}, "clockpanel-manual", [](const std::string& date) {
        panel::PanelOptions options;
        const auto parser = panel::panelOptionParser(options, host::kSocketDefault);
        const std::string page = host::programPage(
            parser, date,
            "It prints an address with a random token; the browser that opens it may do what "
            "clockctl\n"
            "could do with the sockets of the hosts. It serves until SIGINT or SIGTERM.\n",
            "", ".SH SEE ALSO\n.BR clockhost (1),\n.BR clockctl (1)\n");
        const std::vector<host::Option> rows(parser.options().begin(), parser.options().end());
        return std::vector<host::Manual>{{page, {"clockpanel", rows, {}}}};
      });
}
