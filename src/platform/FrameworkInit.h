// The framework's descriptor in the agent component's dependency array.
#pragma once

// The same three strings that begin every host interface record: the framework names itself
// as a service the component depends on ("VeskFrameworkService", "VeskFrameworkInit", "1").
// A host may list it, and needs to do nothing else with it.
struct FrameworkInitSAInterfaceT {
    const char* serviceName;
    const char* interfaceName;
    const char* interfaceVersion;
};

// The address of the one static descriptor; never null, valid for the life of the process.
FrameworkInitSAInterfaceT* getFrameworkInitSAInterfaceT();
