// A machine where nothing is wrong. For use in a sandbox only.
#pragma once

#include "support/CameraSet.h"
#include "support/DownloadSandbox.h"
#include "support/FileServer.h"
#include "support/UsbTree.h"

namespace thermika_test {

/// A camera on the bus, all its files installed, and the vendor's server with the same files.
struct HealthyMachine {
    DownloadSandbox sandbox;
    UsbTree bus;
    FileServer server;

    HealthyMachine() {
        bus.addCamera("1-1", "14080045");
        serveFiles(server, cameraFiles());
        installFiles(cameraFiles());
    }
};

}  // namespace thermika_test
