// A framework base class of request wrappers. The agent derives from it and calls nothing in it.
#pragma once

#include <map>

#include "platform/Semaphore.h"

namespace WrapperTemplate {

struct responseData {
    virtual ~responseData() {}
};

class Wrapper {
  public:
    Wrapper();
    virtual ~Wrapper();
    Wrapper(const Wrapper&) = delete;
    Wrapper& operator=(const Wrapper&) = delete;

  protected:
    VESK::Framework::Semaphore _requestSemaphore;
    VESK::Framework::Semaphore _responseSemaphore;
    VESK::Framework::Semaphore _mapSemaphore;
    // Owned; deleted with the wrapper.
    std::map<int, responseData*> _responses;
};

}  // namespace WrapperTemplate
