// The service families of the local cloud. Each family lives in its own
// routes/<Family>.cpp and registers its endpoints on the cloud it is given.
#pragma once

#include "quilcloud/Cloud.h"

namespace quilcloud {

void registerDeviceRoutes(Cloud& cloud);
void registerAccountRoutes(Cloud& cloud);
void registerNotificationRoutes(Cloud& cloud);
void registerSerialRoutes(Cloud& cloud);
void registerStatusRoutes(Cloud& cloud);
void registerTokenRoutes(Cloud& cloud);
void registerCredentialRoutes(Cloud& cloud);
void registerUpgradeRoutes(Cloud& cloud);
void registerTimeRoutes(Cloud& cloud);
void registerLogRoutes(Cloud& cloud);
void registerUserRoutes(Cloud& cloud);
void registerMusicRoutes(Cloud& cloud);

// Every family, called once by each Cloud when it is made.
void registerAllRoutes(Cloud& cloud);

}  // namespace quilcloud
