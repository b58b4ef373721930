// The smallest framework, of examples/, under the tests for every platform. It leaves out much, and
// says so.
#include <ctime>

#include "InvokerResponse.h"
#include "Method.h"
#include "Platform.h"
#include "framework/Clock.h"
#include "framework/Framework.h"
#include "framework/Settings.h"

namespace conformance {
namespace {

class ExamplePlatform final : public Platform {
 public:
  ExamplePlatform() { example::Clock::startSkipping(); }

  Context& context() override { return m_framework; }
  void passTime(std::chrono::milliseconds duration) override {
    m_framework.runUntil(example::Clock::uptime() + duration);
  }
  void settle() override {}

 private:
  example::Settings m_settings;
  example::Framework m_framework{m_settings};
};

}  // namespace

std::unique_ptr<Platform> makePlatform() {
  return std::make_unique<ExamplePlatform>();
}

std::vector<LeftOut> leftOut() {
  const char* const noManagement = "it has no management";
  const char* const noRemote = "it has no remote calls";
  const char* const noFiles = "it has no files";
  const char* const inMemory = "its settings are in memory, for one service";
  const char* const itsDocument = "it reads only the document that it writes itself";
  std::vector<LeftOut> rows{
      {"*Acceptance.*", "without management, the clock has no settings to change"},
      {"LocalMgmtIfcPromise.*", noManagement},
      {"MgmtAgentIfcPromise.*", noManagement},
      {"ContextPromise.FindsTheServicesByName", noManagement},
      {"ContextPromise.ServicesHaveTheirInterfaces", noManagement},
      {"ContextPromise.AnyThreadMayUseTimersAndLookUpServices", noManagement},
      {"SecurityLogServiceIfcPromise.*", "it has no security log"},
      {"PhysicalInterfaceServiceIfcPromise.*", "it has no hardware"},
      {"PhysicalEventObserverPromise.Hears*", "it has no hardware"},
      {"FrameworkContextPromise.*", noRemote},
      {"InvokerPromise.*", noRemote},
      {"InvokerResponsePromise.*", noRemote},
      {"MessageCodecPromise.*", noRemote},
      {"MethodPromise.*", noRemote},
      {"ProxyPromise.*", noRemote},
      {"ProxyRequestPromise.*", noRemote},
      {"ThreaderPromise.*", "it has no threads"},
      {"ProcessPromise.*", "it starts no programs"},
      {"StoragePromise.*", noFiles},
      {"LoggingPromise.*", "its log is standard error, at a fixed level"},
      {"RejectReasonPromise.DoesNotClipTheReason", "it clips them"},
      {"DataStoragePromise.IsBoundToOneSchema", inMemory},
      {"DataStoragePromise.IsDurable", inMemory},
      {"DataStoragePromise.KeepsTheOldValueWhenItRefuses", inMemory},
      {"DataStoragePromise.RefusesWhatNoDocumentCanCarry", inMemory},
      {"XmlParserPromise.ReportsElementsInOrder", itsDocument},
      {"XmlParserPromise.ReportsAttributes", itsDocument},
      {"XmlParserPromise.ReportsCdataAndTextAroundOtherMarkup", itsDocument},
      {"XmlParserPromise.ReportsTextInOnePiece", itsDocument},
      {"XmlParserPromise.ReportsTextJustBeforeTheEnd", itsDocument},
      {"XmlParserPromise.TheLengthCounts", itsDocument},
      {"XmlParserPromise.RefusesWhatIsNotWellFormed", itsDocument},
  };
  if (sizeof(std::time_t) == 4) {
    rows.push_back({"ClockUtilsPromise.ConvertsToUtc", "it refuses years beyond time_t"});
    rows.push_back(
        {"ClockUtilsPromise.CarriesTheYearBeyondFourDigits", "it refuses years beyond time_t"});
  }
  return rows;
}

}  // namespace conformance

// What the plug-in does not need, and the tests link.
Method::Method(const Method&) = default;
Method& Method::operator=(const Method&) = default;
void Method::reset(std::string /*name*/, methodTypes /*type*/) {}
bool Method::getBoolParameter(const char* /*name*/, bool& /*value*/,
                              Parameter::directions /*direction*/) const {
  return false;
}
InvokerResponse::~InvokerResponse() = default;
