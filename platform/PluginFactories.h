#pragma once

class Invoker;
class Proxy;
class Service;

// The factories a service plug-in exports, with C linkage and no arguments. The framework finds
// them by name (create<Service>, create<Service>Invoker, create<Service>ObserverProxy) and owns
// what they return; it deletes each object through the virtual destructor of the type named here.
// Failure: null.
using ServiceFactory = Service* (*)();
using InvokerFactory = Invoker* (*)();
using ProxyFactory = Proxy* (*)();
