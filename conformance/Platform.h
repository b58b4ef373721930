#pragma once

#include <chrono>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Method.h"

class Context;
class Executable;
class FrameworkContext;
class Invoker;
class Proxy;

namespace conformance {

// An entry of the application log, as logAppUni got it.
struct LogEntry {
  std::string component;
  int level = 0;
  std::string file;
  int line = 0;
  std::string text;
};

// A record of the security log, as SecurityLogServiceIfc::record got it.
struct SecurityRecord {
  std::time_t time = 0;
  int facility = 0, severity = 0, eventClass = 0, eventCode = 0;
  bool failure = false;
  std::string text, subject, origin;
};

// The adapter of a platform under test: what its operator, its clients and its surroundings do, and
// no header of platform/ declares. An integrator derives from it. Each test gets a new one, with
// empty stores. Only the first three operations are required; one that is called but not overridden
// fails the test, unless leftOut() names that test.
// Owner: the kit, one at a time. Thread: the framework thread, on which the tests run too.
class Platform {
 public:
  virtual ~Platform() = default;
  Platform(const Platform&) = delete;
  Platform& operator=(const Platform&) = delete;

  // The context that the framework gives its services. With it, the services that it registers.
  virtual Context& context() = 0;

  // Lets this time pass for the clock, the uptime and the timers. Each timer that expires is
  // delivered before the return, at its own instant: `time` and the uptime then show that instant.
  virtual void passTime(std::chrono::milliseconds duration) = 0;

  // Returns when the changes of device values so far have been passed to the agents.
  virtual void settle() = 0;

  // Switches the device off, at once, and on again. Only what was stored before is left, not what
  // destructors store; the context and everything that came from it may be other objects.
  virtual void restart();

  // The folder in which Storage keeps its files.
  virtual std::filesystem::path storageFolder();

  // Where a file of the device is on this machine, such as the report pipe. Default: in its place.
  virtual std::filesystem::path deviceFile(const std::string& path);

  // The plug-in to load. Default: the file that the environment variable CLOCK_PLUGIN names.
  virtual std::filesystem::path plugin();

  // While true, the store of the settings cannot be written, as on a full disk.
  virtual void refuseSettings(bool refused);

  // Device values: the device, not an agent, sets one; its value, if it has one.
  virtual void setDeviceValue(const std::string& key, const std::string& value);
  virtual std::optional<std::string> deviceValue(const std::string& key);

  // The operator asks the agent "ClockMgmtId". Empty or false: it refused, or there is none.
  virtual std::optional<std::string> managed(const std::string& key);
  virtual bool manage(const std::string& key, const std::string& value);
  virtual bool resetUserData();

  // What agents have said about their items.
  virtual int itemState(const std::string& key);
  virtual void setUserData(const std::string& key, bool isUserData);   // what isUserData answers
  virtual std::vector<std::pair<std::string, std::string>> reports();  // key and value

  // A jack is plugged in (status 1) or unplugged (0).
  virtual void plugJack(int plug, int status);

  virtual std::vector<SecurityRecord> securityRecords();

  // The application log at this level, for each component; what it and the system log got since.
  virtual void setLogLevel(int level);
  virtual std::vector<LogEntry> logEntries();
  virtual std::vector<std::string> systemLogTexts();

  // Remote calls. serve: from now on until dropService, calls reach this service through this
  // invoker, to which the kit has given remote(); its peers' proxies come from the factory. The
  // service may be deleted after dropService; the invoker outlives the platform.
  virtual FrameworkContext& remote();
  virtual void serve(Executable& service, Invoker& invoker, std::function<Proxy*()> makeProxy);
  // The names under which remote() has codecs.
  virtual std::vector<std::string> codecs();
  // A client in another process, as a number for the calls below.
  virtual int connect();
  // The client sends the call and waits for the reply; empty when there is none.
  virtual std::optional<Method> call(int client, Method& request);
  // The events that the client has got since the last call, in order.
  virtual std::vector<Method> events(int client);
  // The client is gone. Returns when the framework has freed its proxy.
  virtual void disconnect(int client);

  // Before a service is deleted: drops its management agents, its subscriptions to events and its
  // remote calls.
  virtual void dropService();

 protected:
  Platform() = default;
};

// Tests that a platform does not pass: a GoogleTest pattern, and the reason, which is printed.
struct LeftOut {
  std::string tests;
  std::string reason;
};

// How long a test may take, 1 s or more, before it counts as hung: the program then says which one,
// and aborts. Default: five minutes. It holds for the tests that begin after the call.
void setTimeLimit(std::chrono::seconds limit);

// The integrator defines both.
std::unique_ptr<Platform> makePlatform();
std::vector<LeftOut> leftOut();

}  // namespace conformance
