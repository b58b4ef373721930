#pragma once

#include <string>

class ClockServiceIfc;
class FrameworkContext;
class InvokerResponse;
class Method;

// One decoded request and what is needed to answer it. Lives as long as the request.
struct RemoteCall {
  ClockServiceIfc& service;
  const Method& request;
  Method& reply;
  FrameworkContext& context;
  InvokerResponse& response;
};

// One row of the clock's remote protocol.
struct RemoteMethod {
  const char* name;
  bool replies;
  void (*handle)(RemoteCall& call);  // calls the service and fills the reply
};

// The row of this name, exactly and case-sensitively, or null.
const RemoteMethod* findRemoteMethod(const std::string& name);
