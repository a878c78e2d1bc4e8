#include "routes/Routes.h"

namespace quilcloud {

void registerAllRoutes(Cloud& cloud) {
    // A new family adds its declaration to Routes.h and one call here.
    registerDeviceRoutes(cloud);
    registerAccountRoutes(cloud);
    registerNotificationRoutes(cloud);
    registerSerialRoutes(cloud);
    registerStatusRoutes(cloud);
    registerTokenRoutes(cloud);
    registerCredentialRoutes(cloud);
    registerUpgradeRoutes(cloud);
    registerTimeRoutes(cloud);
    registerLogRoutes(cloud);
    registerUserRoutes(cloud);
    registerMusicRoutes(cloud);
}

}  // namespace quilcloud
