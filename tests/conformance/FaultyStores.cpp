// Faults in files, settings and their document. The linker replaces NAME by __wrap_NAME;
// __real_NAME is the original.
#include <unistd.h>

#include <filesystem>
#include <ios>
#include <string>

#include "DataStorage.h"
#include "Storage.h"
#include "XmlParser.h"
#include "base/ReplaceAll.h"
#include "conformance/Violation.h"
#include "framework/StateFolder.h"

namespace {

using conformance::Violation;

const Violation kStoredAnyway("StoragePromise.DropsTheNewContentWithoutShutdown",
                              "the destructor replaces the file");
const Violation kEarly("StoragePromise.ChangesTheFileAtShutdownOnly",
                       "store replaces the file at once");
const Violation kInPlace("StoragePromise.ReaderSeesTheOldContentOrTheNewOne",
                         "the file is truncated and written in place");
const Violation kClears("StoragePromise.AppendsWithoutClear", "init drops the old content");
const Violation kNeverClears("StoragePromise.ClearDropsTheOldContent", "clear does nothing");
const Violation kFilesOnly("StoragePromise.DeletesAnyFileAndEmptyFolders",
                           "only regular files are deleted");
const Violation kSaysDeleted("StoragePromise.ReportsWhetherTheFileIsGone",
                             "deleting says that the file is gone, although it is not");
const Violation kSaysShutDown("StoragePromise.ReportsThatTheOldContentRemains",
                              "shutdown hides a failure");
const Violation kAnyName("StoragePromise.RefusesNamesWithAFolder", "names may have a folder");
const Violation kAlwaysBound("StoragePromise.RefusesAllCallsWhileItIsUnbound",
                             "an unbound storage accepts calls");

const Violation kSaysStored("DataStoragePromise.KeepsTheOldValueWhenItRefuses",
                            "a refused value counts as stored");
const Violation kStripped("DataStoragePromise.RefusesWhatNoDocumentCanCarry",
                          "a value with a control character counts as stored");
const Violation kOneSchema("DataStoragePromise.IsBoundToOneSchema", "the schema is ignored");
const Violation kUnescaped("DataStoragePromise.EscapesTheValues", "values are not escaped");
const Violation kEmptyElements("DataStoragePromise.LeavesOutKeysWithoutAValue",
                               "keys without a value have an empty element");
const Violation kFirstKey("DataStoragePromise.HasAnElementForEachKey",
                          "only the first key is read");

const Violation kTwoPieces("XmlParserPromise.ReportsTextInOnePiece", "texts come in two pieces");
const Violation kEmptyText("XmlParserPromise.ReportsNoEmptyText", "an empty text is reported");
const Violation kAnyDocument("XmlParserPromise.RefusesWhatIsNotWellFormed",
                             "malformed documents are accepted");
const Violation kAllOrNothing("XmlParserPromise.ReportsThePartBeforeTheError",
                              "nothing of a malformed document is reported");

// Calls the callbacks of one parser with the faults.
struct FaultyCallbacks {
  void* userData;
  XmlParser::StartElement start;
  XmlParser::EndElement end;
  XmlParser::CharacterData text;
  bool hadText = false;
  bool silent = false;

  static FaultyCallbacks& of(void* callbacks) { return *static_cast<FaultyCallbacks*>(callbacks); }
  static void onStart(void* self, const char* name, const char** attributes) {
    of(self).hadText = false;
    if (!of(self).silent) of(self).start(of(self).userData, name, attributes);
  }
  static void onText(void* self, const char* text, int length) {
    if (of(self).silent) return;
    of(self).hadText = true;
    const int first = kTwoPieces.on() ? length / 2 : length;
    of(self).text(of(self).userData, text, first);
    if (first < length) of(self).text(of(self).userData, text + first, length - first);
  }
  static void onEnd(void* self, const char* name) {
    if (of(self).silent) return;
    if (kEmptyText.on() && !of(self).hadText) of(self).text(of(self).userData, "", 0);
    of(self).end(of(self).userData, name);
  }
};
FaultyCallbacks g_callbacks;

std::string storedFile() {
  return host::storageFolder() + "/file";
}

}  // namespace

// Not in the block below: C knows no strings to return.
std::string realDataItems(DataStorage* self, const std::string& keys) asm(
    "__real__ZN11DataStorage12getDataItemsERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
std::string faultyDataItems(DataStorage* self, const std::string& keys) asm(
    "__wrap__ZN11DataStorage12getDataItemsERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
std::string faultyDataItems(DataStorage* self, const std::string& keys) {
  std::string document =
      realDataItems(self, kFirstKey.on() ? keys.substr(0, keys.find(' ')) : keys);
  if (kUnescaped.on()) document = host::replaceAll(document, "&amp;", "&");
  if (kEmptyElements.on() && document.find("<A>") == std::string::npos)
    document.insert(document.rfind("</"), "<A></A>");
  return document;
}

extern "C" {

bool __real__ZN7Storage8shutdownEv(Storage* self);
bool __wrap__ZN7Storage8shutdownEv(Storage* self) {
  if (kInPlace.on()) static_cast<void>(truncate(storedFile().c_str(), 0));
  return __real__ZN7Storage8shutdownEv(self) || kSaysShutDown.on() || kAlwaysBound.on();
}

void __real__ZN7StorageD1Ev(Storage* self);
void __wrap__ZN7StorageD1Ev(Storage* self) {
  if (kStoredAnyway.on()) __real__ZN7Storage8shutdownEv(self);
  __real__ZN7StorageD1Ev(self);
}

bool __real__ZN7Storage5clearEv(Storage* self);
bool __wrap__ZN7Storage5clearEv(Storage* self) {
  return kNeverClears.on() || __real__ZN7Storage5clearEv(self);
}

bool __real__ZN7Storage4initEPKcSt13_Ios_OpenmodeS2_(Storage* self, const char* name,
                                                     std::ios_base::openmode read,
                                                     std::ios_base::openmode write);
bool __wrap__ZN7Storage4initEPKcSt13_Ios_OpenmodeS2_(Storage* self, const char* name,
                                                     std::ios_base::openmode read,
                                                     std::ios_base::openmode write) {
  const bool bound = __real__ZN7Storage4initEPKcSt13_Ios_OpenmodeS2_(self, name, read, write);
  if (bound && kClears.on()) __real__ZN7Storage5clearEv(self);
  return bound || kAnyName.on();
}

bool __real__ZN7Storage5storeEPKcPci(Storage* self, const char* part, char* data, int length);
bool __wrap__ZN7Storage5storeEPKcPci(Storage* self, const char* part, char* data, int length) {
  const bool stored = __real__ZN7Storage5storeEPKcPci(self, part, data, length);
  if (kEarly.on()) {
    __real__ZN7Storage8shutdownEv(self);
    const auto binary = std::ios_base::binary;
    __real__ZN7Storage4initEPKcSt13_Ios_OpenmodeS2_(self, "file", binary, binary);
  }
  return stored;
}

bool __real__ZN7Storage15deleteFile_noExERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    const std::string& path);
bool __wrap__ZN7Storage15deleteFile_noExERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
    const std::string& path) {
  if (kFilesOnly.on() && !std::filesystem::is_regular_file(path)) return false;
  return __real__ZN7Storage15deleteFile_noExERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE(
             path) ||
         kSaysDeleted.on();
}

void __real__ZN11DataStorageC1ER7ContextPKc(DataStorage* self, Context& context,
                                            const char* schema);
void __wrap__ZN11DataStorageC1ER7ContextPKc(DataStorage* self, Context& context,
                                            const char* schema) {
  __real__ZN11DataStorageC1ER7ContextPKc(self, context, kOneSchema.on() ? "All" : schema);
}

bool __real__ZN11DataStorage11setDataItemERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES7_(
    DataStorage* self, const std::string& key, const std::string& value);
bool __wrap__ZN11DataStorage11setDataItemERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES7_(
    DataStorage* self, const std::string& key, const std::string& value) {
  return __real__ZN11DataStorage11setDataItemERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEES7_(
             self, key, value) ||
         kSaysStored.on() || (kStripped.on() && value.find('\x01') != std::string::npos);
}

void __real__ZN9XmlParserC1EPvPFvS0_PKcPS2_EPFvS0_S2_EPFvS0_S2_iE(XmlParser* self, void* userData,
                                                                  XmlParser::StartElement start,
                                                                  XmlParser::EndElement end,
                                                                  XmlParser::CharacterData text);
void __wrap__ZN9XmlParserC1EPvPFvS0_PKcPS2_EPFvS0_S2_EPFvS0_S2_iE(XmlParser* self, void* userData,
                                                                  XmlParser::StartElement start,
                                                                  XmlParser::EndElement end,
                                                                  XmlParser::CharacterData text) {
  g_callbacks = {userData, start, end, text};
  __real__ZN9XmlParserC1EPvPFvS0_PKcPS2_EPFvS0_S2_EPFvS0_S2_iE(
      self, &g_callbacks, FaultyCallbacks::onStart, FaultyCallbacks::onEnd,
      FaultyCallbacks::onText);
}

bool __real__ZN9XmlParser12parseMessageEPKci(XmlParser* self, const char* document, int length);
bool __wrap__ZN9XmlParser12parseMessageEPKci(XmlParser* self, const char* document, int length) {
  if (kAllOrNothing.on()) {
    g_callbacks.silent = true;
    const bool wellFormed = __real__ZN9XmlParser12parseMessageEPKci(self, document, length);
    g_callbacks.silent = false;
    if (!wellFormed) return false;
  }
  return __real__ZN9XmlParser12parseMessageEPKci(self, document, length) || kAnyDocument.on();
}

}  // extern "C"
