// Every exported call that reaches a service, against the method, address
// and parameters that service reads, and the 15 s time-out of every call. The rows are written from
// the services' interfaces, not from the library: the local cloud's routes come from the same hands
// as the library's, so a path or key misspelt alike in both would pass everywhere else.
#include <functional>
#include <set>

#include "FakeHelpers.h"

using namespace velmar::quil;
using namespace velmar::quil::api;

namespace {

// The address the caller hands over ("caller"), and the one the configuration
// holds under each key: a call that reads the wrong key goes elsewhere.
std::string address(const std::string& name) {
    return "https://" + name + ".test";
}
const std::string kCaller = address("caller");
const std::string kKeys[] = {"sQuilAPIURL",   "sQuilUserprofileURL", "sQuilUserprofilePreviewURL",
                             "sVeWiFiAPIURL", "sVeWiFiLOGURL",       "sTimeSyncURL",
                             "caller"};

// A request as "METHOD base path?parameters": the base by its name above or
// "fixed" (an address of the library's own); the parameters besides
// "requestId" in key order, a value the library computes (nonce, signature,
// encoding) as "*".
std::string request(const fake::Call& call) {
    static const std::set<std::string> computed = {"nonce", "b64Sign", "s",         "_n",
                                                   "_s",    "_nonce",  "extra_data"};
    const std::string url = call.url.empty() ? call.baseUrl + call.path : call.url;
    std::string text = call.method + " fixed " + call.path;
    for (const std::string& name : kKeys) {
        if (url == address(name) || url.rfind(address(name) + "/", 0) == 0)
            text = call.method + " " + name + " " + url.substr(address(name).size());
    }
    char separator = '?';
    for (const auto& [key, value] : fake::paramsOf(call)) {
        text += separator + key + "=" + (computed.count(key) ? "*" : value);
        separator = '&';
    }
    return text;
}

class RoutesTest : public fake::FakeTest {
  protected:
    void SetUp() override {
        FakeTest::SetUp();
        const std::map<std::string, std::string> device = {
            {"deviceid", "dev-42"}, {"channel_secret", "0123456789abcdef"},
            {"sn", "SN-1"},         {"uid", "1001"},
            {"iot_did", "iot-7"},   {"model", "speaker.v2"},
            {"version", "2.14.3"},  {"channel", "release"}};
        for (const auto& [name, value] : device)
            fake::setDeviceValue(name, value);
        for (const std::string& key : kKeys)
            fake::setConfig(key, address(key));
    }
};

// No answer is scripted at first: each call is refused by the transport, after
// it has been recorded; where a service is tried twice, every attempt is
// checked. The thin calls are then answered, and refused again.
TEST_F(RoutesTest, EachCallGoesWhereItsServiceListens) {
    std::string s, t;
    long long n = 0;
    int i = 0;
    unsigned long long u = 0;
    std::vector<long long> ids;
    TencentAccount account;
    std::string name = "night", seconds = "90";
    const struct {
        std::function<void()> call;
        const char* request;     // the parameters in key order
        bool handsOver = false;  // the answer, also a failure's empty one
    } rows[] = {
        {[&] { DeviceAPI::checkRegistrationStatus(s, kCaller); },
         "POST caller /brokerlist/check_registration_status?b64Sign=*&deviceId=dev-42"
         "&hash_algorithm=SHA256&nonce=*"},
        {[&] { DeviceAPI::getSuperAdmin(n, kCaller, true); },
         "GET caller /device/super_admin?master=true"},
        {[&] { QuilConfigUtils::syncAdminStatus(false); },
         "GET sQuilAPIURL /device/super_admin?master=false"},
        {[&] { DeviceAPI::requestDeviceTokenV2(s, kCaller); },
         "POST caller /device_token/v2/renew?hash_algorithm=SHA256", true},
        {[&] { DeviceAPI::requestDeviceTransfer(s, kCaller); },
         "POST caller /device_token/v2/transfer", true},
        {[&] { DeviceAPI::keepAliveKeyGet(s, kCaller); },
         "GET caller /device/low_power_mode/transmission_secret?hardware=speaker.v2&sn=SN-1"},
        {[&] { QuilConfigUtils::keepAliveKeyGet(s); },
         "GET sQuilAPIURL /device/low_power_mode/transmission_secret?hardware=speaker.v2&sn=SN-1"},
        {[&] { PresenceAPI::getPresence(s, kCaller); }, "GET caller /device/presence/", true},
        {[&] { PingAPI::pingDevice(s, kCaller, "deep"); },
         "POST caller /device/ping/?pingLevel=deep", true},
        {[&] { NotificationAPI::send(s, kCaller, VE_PUSH_REMINDER, "T", "A", "X"); },
         "POST caller /device/land_notification/?abstract=A&extraAttributes=X&title=T&type=2",
         true},
        {[&] { VePushUtils::notify(s, VE_PUSH_REMINDER, "tea"); },
         "POST sQuilAPIURL /device/land_notification/?abstract=&extraAttributes=tea&title=&type=2",
         true},
        {[&] { ClientInfoListAPI::getClientList(s, kCaller); },
         "GET caller /client_info/list/linux?userId=1001"},
        {[&] { VoipDurationAPI::getStatus(s, kCaller); },
         "GET caller /duration/current_month/status/linux?userId=1001"},
        {[&] { VoipDurationAPI::add(s, kCaller, seconds); },
         "GET caller /duration/current_month/add/linux?durationInSec=90&userId=1001"},
        {[&] { CommonConfigAPI::getConfig(s, kCaller, name); },
         "GET caller /common_config/linux?configName=night&userId=1001"},
        {[&] { PrivacySettingsAPI::setPrivacySettings(kCaller, 18446744073709551615ull, "v"); },
         "POST caller /userprofile/user_privacy_on_device?userId=18446744073709551615&value=v"},
        {[&] { PrivacySettingsAPI::getPrivacySettings(s, kCaller, 7); },
         "GET caller /userprofile/user_privacy_on_device?userId=7"},
        {[&] { AIServiceTokenAPI::getServiceToken(s, n, kCaller); },
         "GET caller /device/aiservice/token/"},
        {[&] { VemcTokenAPI::getToken(s, kCaller); },
         "GET caller /vemc/token/linux?clientId=dev-42&userId=1001"},
        {[&] { VEOTTokenAPI::upload("tok", "ses", "u-1", kCaller); },
         "POST caller /device/veot/token/upload/?sessionId=ses&token=tok&userId=u-1"},
        {[&] { VEOTTokenAPI::download(s, t, i, kCaller); },
         "GET caller /device/veot/token/download"},
        {[&] { TencentAccountAPI::getTencentAccount(account, kCaller); },
         "GET caller /device/tencent/account"},
        {[&] { DeviceSnCmei::getDeviceCmeiBySn(s, false); },
         "GET sQuilUserprofileURL /device_sn/get_device_cmei?deviceSn=SN-1", true},
        {[&] { DeviceSnCmei::getDeviceCmeiBySn(s, true); },
         "GET sQuilUserprofilePreviewURL /device_sn/get_device_cmei?deviceSn=SN-1", true},
        {[&] { DeviceSnCtei::getDeviceCteiBySn(s, false); },
         "GET sQuilUserprofileURL /device_sn/get_device_ctei?deviceSn=SN-1", true},
        {[&] { DeviceSnCtei::getDeviceCteiBySn(s, true); },
         "GET sQuilUserprofilePreviewURL /device_sn/get_device_ctei?deviceSn=SN-1", true},
        {[&] { DeviceSnProfile::getDeviceProfileBySn(s, false); },
         "GET sQuilUserprofileURL /device_sn/get_profile", true},
        // The profile needs no serial number: the cookies name the device.
        {[&] { fake::clearDeviceValue("sn"), DeviceSnProfile::getDeviceProfileBySn(s, false); },
         "GET sQuilUserprofileURL /device_sn/get_profile"},
        {[&] { DeviceSnProfile::getDeviceProfileBySn(s, true); },
         "GET sQuilUserprofilePreviewURL /device_sn/get_profile", true},
        {[&] { CarrierOperator::getCarrierOperatorStatus(s, false); },
         "GET sQuilUserprofileURL /device_carrier/get_carrier_status?sn=SN-1", true},
        {[&] { CarrierOperator::getCarrierOperatorStatus(s, true); },
         "GET sQuilUserprofilePreviewURL /device_carrier/get_carrier_status?sn=SN-1", true},
        {[&] { CmccAndlinkAPI::getDeviceID(s, kCaller); },
         "GET caller /device/andlink/cmcc_device_id?hardware=speaker.v2&veotDID=iot-7"},
        {[&] { CmccAndlinkAPI::setDeviceID("CMCC-9", kCaller); },
         "GET caller /app/set_cmcc_id/linux?cmccDeviceId=CMCC-9&veotDid=iot-7"},
        {[&] { DeviceStatusAPI::setDeviceStatus(kCaller, "volume", "40"); },
         "POST caller /device/device_status?catagory=volume&status=40"},
        {[&] { DeviceStatusAPI::getDeviceStatus(s, kCaller, "volume"); },
         "GET caller /device/device_status?catagory=volume"},
        {[&] { WorkDayConfigAPI::getWorkDayConfig(s, kCaller, "2026.1"); },
         "GET caller /device/workday/config?version=2026.1", true},
        {[&] { StereoAPI::SetServer(s, kCaller); },
         "POST caller /iot/dcm/set_stereo_server?hardware=speaker.v2", true},
        {[&] { fake::clearDeviceValue("model"), StereoAPI::SetServer(s, kCaller); },
         "POST caller /iot/dcm/set_stereo_server?hardware="},
        {[&] { MusicSongInfoAPI::getSongListInfo(s, kCaller, "[1,2]", 1, -1); },
         "POST caller /device/music/song_info?songIdList=[ 2 ]"},
        {[&] { PlayListV2API::getLists(ids, kCaller); }, "GET caller /device/playlist/v2/lists"},
        {[&] { PlayListV2API::getSongsInList(s, 4294967296LL, -1, 20, kCaller); },
         "GET caller /device/playlist/v2/songs?count=20&listId=4294967296&offset=-1"},
        {[&] { PlayListV2API::getSongsInChannel(s, 7, 40, 0, kCaller); },
         "GET caller /device/playlist/v2/songs_in_channel?count=0&listId=7&offset=40"},
        {[&] { MusicAlbumAPI::getMusicAlbum(s, kCaller, "al-1"); },
         "GET caller /music/album_info?albumId=al-1"},
        {[&] { MusicPlayListAPI::getMusicPlayList(s, kCaller, "pl-1"); },
         "GET caller /music/playlist/?listId=pl-1"},
        {[&] { MusicRecommendAPI::getMusicRecommendation(s, kCaller, "u-1", "ten"); },
         "GET caller /device/music_recommendation?count=ten&userId=u-1", true},
        {[&] { MusicStationAPI::getStationSoundList(s, kCaller, "st-1", "fm", "news", -1, 0); },
         "GET caller /device/station/sound_list?category=news&count=0&offset=-1&origin=fm"
         "&stationId=st-1",
         true},
        {[&] {
             LoadMoreAPI::getLoadMoreList(s, kCaller, 4294967297LL, "L1", "tide", "al", 20, -1);
         },
         "GET caller /device/audio/loadmore?count=-1&listId=L1&offset=20&origin=tide&type=al"
         "&userId=4294967297",
         true},
        {[&] { LoadMoreV2API::getLoadMoreV2List(s, kCaller, -5, "L2", "wave", "song", 0, 10); },
         "GET caller /device/audio/loadmore/v2?count=10&listId=L2&offset=0&origin=wave"
         "&type=song&userId=-5",
         true},
        {[&] { PlayResourceAPI::getPlayResource(s, kCaller, "other-dev", "al-9", "cp-1", "kids"); },
         "GET caller /babycourse/device/next/play?alarmId=al-9&cp=kids&cpId=cp-1"
         "&deviceId=other-dev",
         true},
        {[&] {
             PlayResourceAPI::setPlayResourceStatus(kCaller, "d-9", "al-9", "c", "k", -1, 65000);
         },
         "POST caller /babycourse/device/play/update?alarmId=al-9&deviceId=d-9&playCP=k"
         "&playCPId=c&playIndex=-1&playPosition=65000"},
        {[&] { MusicActionLogAPI::log(s, kCaller, "u-1", "app", "play", "s-1", "song", "{}"); },
         "POST caller /device/music_action_log?appId=app&eventType=play&extraInfo={}"
         "&hardware=speaker.v2&itemId=s-1&itemType=song&romChannel=release&romVersion=2.14.3"
         "&userId=u-1",
         true},
        // Device values it cannot read go as empty ones.
        {[&] {
             fake::clearDeviceValue("model"), fake::clearDeviceValue("channel");
             MusicActionLogAPI::log(s, kCaller, "", "", "", "", "", "");
         },
         "POST caller /device/music_action_log?appId=&eventType=&extraInfo=&hardware=&itemId="
         "&itemType=&romChannel=&romVersion=2.14.3&userId="},
        {[&] { UpgradeAPI::checkUpgrade(s, n, "speaker.v2", "f", "1", "c", "l", "CN"); },
         "GET sVeWiFiAPIURL /rs/grayupgrade/v2/speaker.v2?channel=c&countryCode=CN&filterID=f"
         "&locale=l&platform=speaker.v2&s=*&version=1"},
        {[&] { TimeSyncAPI::request(n); }, "GET sTimeSyncURL "},
        {[&] { LogUploadAPI::upload(s, "common-a-b", "1.0", "d-1", "p"); },
         "POST sVeWiFiLOGURL /log/common/common-a-b?_n=*&_s=*&_t=1700000000000&extra_data=*"
         "&id=d-1&payload=p"},
        {[&] { ActionLogAPI::upload(s, "d-1", "rec", kCaller); },
         "POST caller /action/v2/c/d-1?_nonce=*&payload=rec"},
        {[&] { BindAPI::bind(s, -1, "pl"); }, "POST sQuilAPIURL /bind/?payload=pl&userId=-1"},
        {[&] { GetUserProfileAPI::request(u, "client", "tok"); },
         "GET fixed user/profile?clientId=client&token=tok"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.request);
        SetUp();
        stdoutOf(row.call);
        ASSERT_FALSE(fake::calls().empty());
        for (const fake::Call& call : fake::calls()) {
            EXPECT_EQ(request(call), row.request);
            EXPECT_EQ(call.timeoutMs, 15000);
        }
        for (const std::string& opened : fake::configOpens())
            EXPECT_EQ(opened, "/usr/share/quil/messaging/messaging.conf");
        if (!row.handsOver) continue;
        s = "stale";
        fake::pushBody("{\"code\":3}", 500);
        row.call();
        EXPECT_EQ(s, "{\"code\":3}");
        fake::pushFailure();
        row.call();
        EXPECT_EQ(s, "");
    }
}

}  // namespace
