// The security component, which keeps the certificate MOs. All static; 1 means OK.
#pragma once

#include <string>

#include "platform/Attribute.h"
#include "platform/DBObject.h"

class ISec {
  public:
    static int createMo(int handle, DBObject* object);
    static int editMo(int handle, std::string dn, Attribute* attribute);
    static int deleteMO(int handle, std::string dn);
    static int committed(int handle);
    static int rollback(int handle);
    static int executeAction(std::string actionName, DBObject* parameters);
};
