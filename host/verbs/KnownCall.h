#pragma once

#include <span>
#include <string>
#include <vector>

#include "Method.h"

// Calls whose names are in the catalogue, so that a mistake is refused before anything is sent. The
// functions throw UsageError, which says what there is. Pure; thread: any.
namespace host {

struct MethodRow;

struct KnownCall {
  const MethodRow* method;
  Method request;
  std::vector<std::string> ofReply{};  // the words that name parameters of the reply
};

// words: NAME=VALUE of the request or of the reply. Refuses unknown names.
[[nodiscard]] KnownCall knownCall(const std::string& method, std::span<const std::string> words);

// Refuses a name that is no parameter of the method or event.
void requireParameter(const MethodRow& row, const std::string& name);

// Refuses words that name parameters of the reply. instead: what would be right.
void requireRequestOnly(const KnownCall& call, const std::string& instead);

// Refuses a call that lacks a parameter of the request, or has one of another type. The service
// would refuse it, or ignore it without a reply.
void requireComplete(const KnownCall& call);

}  // namespace host
