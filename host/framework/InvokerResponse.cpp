#include "InvokerResponse.h"

InvokerResponse::~InvokerResponse() = default;
