// What a telephone needs and the clock can do without. The linker wants every symbol of the seam,
// so each is defined here in the way that says "not available".
#include "Method.h"
#include "Process.h"
#include "Storage.h"
#include "Threader.h"

// Threads. Without them nothing listens for the reports of an NTP client.
bool Threader::spawn(unsigned long* /*threadId*/, Threadable* /*body*/, const char* /*name*/,
                     VotkThreadPriority /*priority*/, int /*stackBytes*/) {
  return false;
}
void Threader::waitForThreadCompletion(unsigned long /*threadId*/) {}
void Threader::destroy(unsigned long /*threadId*/) {}

// Child processes: the NTP client.
struct Process::Impl {};
Process::Process(int /*options*/, char* const* /*arguments*/, char* const* /*environment*/,
                 const char* /*workingFolder*/) {}
Process::~Process() = default;
int Process::launch() {
  return 0;
}

// Files: setupTZ.sh, from which other processes of a telephone read the time zone.
struct Storage::Impl {};
Storage::Storage() = default;
Storage::~Storage() = default;
bool Storage::init(const char* /*name*/, std::ios_base::openmode /*readMode*/,
                   std::ios_base::openmode /*writeMode*/) {
  return false;
}
bool Storage::clear() {
  return false;
}
bool Storage::store(const char* /*subName*/, char* /*data*/, int /*length*/) {
  return false;
}
bool Storage::shutdown() {
  return false;
}
bool Storage::deleteFile_noEx(const std::string& /*path*/) {
  return false;
}

// Remote calls: no invoker and no proxy is created, so no Method is either.
Method::Method() : Method("", call) {}
Method::Method(const char* /*name*/, methodTypes type) : m_type(type) {}
Method::~Method() = default;
void Method::addIntParameter(const char* /*name*/, int /*value*/,
                             Parameter::directions /*direction*/) {}
void Method::addStringParameter(const char* /*name*/, const std::string& /*value*/,
                                Parameter::directions /*direction*/) {}
void Method::addBoolParameter(const char* /*name*/, bool /*value*/,
                              Parameter::directions /*direction*/) {}
bool Method::getIntParameter(const char* /*name*/, int& /*value*/,
                             Parameter::directions /*direction*/) const {
  return false;
}
bool Method::getStringParameter(const char* /*name*/, std::string& /*value*/,
                                Parameter::directions /*direction*/) const {
  return false;
}
