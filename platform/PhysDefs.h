#pragma once

// Types of the physical interface: keys, plugs, lamps, hardware. The types hold any int; numbers
// without a name here are passed on unchanged.
struct PhysDefs {
  enum keyFunctionType : int { keyNone = 0 };
  enum actionType : int { actionNone = 0, actionPressed = 1, actionReleased = 2 };
  enum plugIdentifier : int { plugNone = 0, plugNetwork = 5 };
  enum plugStatus : int { plugRemoved = 0, plugInserted = 1 };
  enum hotplugAction : int { hotplugAdded = 0, hotplugRemoved = 1 };
  enum hotplugBus : int { hotplugBusUnknown = 0 };
  enum hotplugClass : int { hotplugClassUnknown = 0 };
  enum lampMode : int { lampOff = 0, lampOn = 1 };
  enum lampColour : int { lampColourDefault = 0 };

  // Which build of the telephone this is. 2, 3 and 4 form one class, with defaults of its own.
  enum hardwareSubVariant : int { subVariantUnknown = 0 };

  // A range of events outside the keypad: a kind, and the first and last of its identifiers.
  struct KeyGrpOther {
    int kind;
    int first;
    int last;
  };

  // One group of a subscription.
  struct SubscriptionGrp {
    KeyGrpOther other;
  };
};
