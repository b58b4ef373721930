#pragma once

class ManageableData;

// A component whose settings the management framework reads and writes by key.
// Thread: the management thread. Objects are never deleted through this base.
class MgmtAgentIfc {
 public:
  // Applies the record's value of its root. False when it was refused.
  virtual bool setData(ManageableData& record) = 0;

  // Fills in the value of the record's root. False, and nothing filled in, for an unknown key.
  virtual bool getData(ManageableData& record) = 0;

  // A key observed with LocalMgmtIfc::observeData has changed; the record carries its new value.
  virtual void manageableDataChanged(ManageableData& record) = 0;

  // Resets the items that the user may change to the device's defaults.
  virtual bool resetUserData() = 0;

 protected:
  ~MgmtAgentIfc() = default;
};
