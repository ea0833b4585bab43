// The station's WiFi module.
#pragma once

class ITransport {
  public:
    // Restarts the module with `mode`. Non-zero on success.
    static int wifiRestart(int mode);
    // Returns the module to its factory state. Non-zero on success.
    static int wifiResetToFactory();
};
