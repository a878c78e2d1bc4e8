// Every device-service route of the local cloud checks the device signature
// before anything else: an unsigned request never reaches a service.
#include "CloudFixture.h"
#include "velmar/quil/api/DeviceAPI.h"

using velmar::quil::api::DeviceAPI;

namespace {

class DeviceServiceAuthTest : public velmar::testing::CloudFixture {};

TEST_F(DeviceServiceAuthTest, EveryRouteRefusesAWrongSignature) {
    store("channel_secret", "3c9a1f0e5b7d4c2Xa6e0f19d2b3c4d5e");
    const std::pair<const char*, const char*> routes[] = {
        {"POST", "/device/land_notification/"},
        {"GET", "/client_info/list/linux"},
        {"GET", "/duration/current_month/status/linux"},
        {"GET", "/duration/current_month/add/linux"},
        {"GET", "/common_config/linux"},
        {"POST", "/userprofile/user_privacy_on_device"},
        {"GET", "/userprofile/user_privacy_on_device"},
        {"GET", "/device/aiservice/token/"},
        {"GET", "/vemc/token/linux"},
        {"POST", "/device/veot/token/upload/"},
        {"GET", "/device/veot/token/download"},
        {"GET", "/device/tencent/account"},
        {"GET", "/device_sn/get_device_cmei"},
        {"GET", "/device_sn/get_device_ctei"},
        {"GET", "/device_sn/get_profile"},
        {"GET", "/device_carrier/get_carrier_status"},
        {"GET", "/device/andlink/cmcc_device_id"},
        {"GET", "/app/set_cmcc_id/linux"},
        {"POST", "/device/device_status"},
        {"GET", "/device/device_status"},
        {"GET", "/device/workday/config"},
        {"POST", "/iot/dcm/set_stereo_server"},
        {"POST", "/device/music/song_info"},
        {"GET", "/device/playlist/v2/lists"},
        {"GET", "/device/playlist/v2/songs"},
        {"GET", "/device/playlist/v2/songs_in_channel"},
        {"GET", "/device/music_recommendation"},
        {"GET", "/device/station/sound_list"},
        {"GET", "/device/audio/loadmore"},
        {"GET", "/device/audio/loadmore/v2"},
        {"GET", "/babycourse/device/next/play"},
        {"POST", "/babycourse/device/play/update"},
        {"POST", "/device/music_action_log"},
    };
    for (const auto& [method, path] : routes) {
        std::string response;
        int status = 0;
        ASSERT_EQ(DeviceAPI::request(response, status, baseUrl(), path, method, {}), 0) << path;
        EXPECT_EQ(status, 401) << method << " " << path;
        EXPECT_NE(response.find("invalid device signature"), std::string::npos) << response;
    }
}

}  // namespace
