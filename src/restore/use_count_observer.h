// UseCountObserver: hears what a use-count rebuild takes, finds and makes, while it happens.
#pragma once

#include <string>

#include "restore/record_list_observer.h"

namespace orx {

class CMAttribute;
class CMConfigHandle;

class UseCountObserver : public RecordListObserver {
 public:
  // A model is looked for; its handle, or that of the model before it when the list is empty.
  virtual void takenModel(const CMConfigHandle& /*model*/) {}
  // An object that refers to the model.
  virtual void foundReference(const CMConfigHandle& /*object*/) {}
  // The use count of the model as it was, and the signatures that it gets.
  virtual void changedUsage(const CMAttribute& /*useCount*/, const CMAttribute& /*signatures*/) {}
  // The model when it is ready: its head record and its attribute text.
  virtual void rebuiltModel(const DataBuffer& /*head*/, const std::string& /*text*/) {}
};

}  // namespace orx
