// Every answer of the cloud's services that an exported call reads, but for
// the song lists (SongListFuzz): the first byte picks the call, the rest is
// the cloud's body. An answer a call hands over as it is must arrive byte for
// byte; the privacy settings handed out must be a JSON object.
#include <functional>

#include "Endpoints.h"
#include "Harness.h"

using namespace velmar::quil;
using namespace velmar::quil::api;

namespace {

const std::string kBase("https://cloud.test");

// What the calls hand out.
struct Out {
    std::string text, other = "60";
    long long wide = 0;
    unsigned long long user = 0;
    int small = 0;
    TencentAccount account;
};

enum Check { kNone, kVerbatim, kObject };

struct Row {
    const char* name;
    Check check;
    std::function<int(Out&)> call;  // 0 when it succeeded
};

// The messaging agent stores the carrier status it was handed.
int carrier(Out& o) {
    const int status = CarrierOperator::getCarrierOperatorStatus(o.text, false);
    CarrierOperator::setCarrierOperatorStatus(o.text);
    return status;
}

// A row: the call is an expression of `o` on the queued answer (`!` makes a
// bool's true 0).
#define ROW(name, check, call)                                           \
    {                                                                    \
        name, check, []([[maybe_unused]] Out& o) -> int { return call; } \
    }

const Row kRows[] = {
    ROW("time", kNone, TimeSyncAPI::request(o.wide)),
    ROW("privacy-get", kObject, PrivacySettingsAPI::getPrivacySettings(o.text, kBase, 1001)),
    ROW("privacy-set", kNone, PrivacySettingsAPI::setPrivacySettings(kBase, 1001, "{}")),
    ROW("veot-upload", kNone, VEOTTokenAPI::upload("t", "s", "1001", kBase)),
    ROW("veot-download", kNone, VEOTTokenAPI::download(o.text, o.other, o.small, kBase)),
    ROW("vemc", kNone, VemcTokenAPI::getToken(o.text, kBase)),
    ROW("user-profile", kNone, GetUserProfileAPI::request(o.user, "client", "t")),
    ROW("andlink-get", kNone, CmccAndlinkAPI::getDeviceID(o.text, kBase)),
    ROW("andlink-set", kNone, CmccAndlinkAPI::setDeviceID("cmcc", kBase)),
    ROW("upgrade", kNone,
        !UpgradeAPI::checkUpgrade(o.text, o.wide, "p", "f", "1.0", "stable", "en", "US")),
    ROW("registration", kNone, DeviceAPI::checkRegistrationStatus(o.text, kBase)),
    ROW("super-admin", kNone, DeviceAPI::getSuperAdmin(o.wide, kBase, true)),
    ROW("admin-sync", kNone, !QuilConfigUtils::syncAdminStatus(false)),
    ROW("token-renewal", kVerbatim, DeviceAPI::requestDeviceTokenV2(o.text, kBase)),
    ROW("token-transfer", kVerbatim, DeviceAPI::requestDeviceTransfer(o.text, kBase)),
    ROW("keep-alive-key", kNone, DeviceAPI::keepAliveKeyGet(o.text, kBase)),
    ROW("keep-alive-key-configured", kNone, (QuilConfigUtils::keepAliveKeyGet(o.text), 0)),
    ROW("ai-service-token", kNone, AIServiceTokenAPI::getServiceToken(o.text, o.wide, kBase)),
    ROW("tencent-account", kNone, TencentAccountAPI::getTencentAccount(o.account, kBase)),
    ROW("cmei", kVerbatim, DeviceSnCmei::getDeviceCmeiBySn(o.text, false)),
    ROW("ctei", kVerbatim, DeviceSnCtei::getDeviceCteiBySn(o.text, true)),
    ROW("sn-profile", kVerbatim, DeviceSnProfile::getDeviceProfileBySn(o.text, false)),
    ROW("carrier", kVerbatim, carrier(o)),
    ROW("device-status-get", kNone, DeviceStatusAPI::getDeviceStatus(o.text, kBase, "alarm")),
    ROW("device-status-set", kNone, DeviceStatusAPI::setDeviceStatus(kBase, "alarm", "on")),
    ROW("work-day", kVerbatim, WorkDayConfigAPI::getWorkDayConfig(o.text, kBase, "1")),
    ROW("stereo", kVerbatim, StereoAPI::SetServer(o.text, kBase)),
    ROW("client-list", kVerbatim, ClientInfoListAPI::getClientList(o.text, kBase)),
    ROW("common-config", kVerbatim, CommonConfigAPI::getConfig(o.text, kBase, o.other)),
    ROW("voip-status", kVerbatim, VoipDurationAPI::getStatus(o.text, kBase)),
    ROW("voip-add", kVerbatim, VoipDurationAPI::add(o.text, kBase, o.other)),
    ROW("notification", kVerbatim,
        NotificationAPI::send(o.text, kBase, VE_PUSH_ALARM, "t", "a", "{}")),
    ROW("push-notify", kVerbatim, !VePushUtils::notify(o.text, VE_PUSH_GENERAL, "{}")),
    ROW("ping", kVerbatim, PingAPI::pingDevice(o.text, kBase, "1")),
    ROW("presence", kVerbatim, PresenceAPI::getPresence(o.text, kBase)),
    ROW("device-request", kVerbatim, DeviceAPI::request(o.text, kBase, "/p", "GET", {})),
    ROW("log-upload", kVerbatim, !LogUploadAPI::upload(o.text, "u", "1.0", "id", "p")),
    ROW("action-log", kVerbatim, ActionLogAPI::upload(o.text, "did", "p", kBase)),
    ROW("bind", kVerbatim, BindAPI::bind(o.text, 1001, "p")),
    ROW("load-more", kVerbatim,
        LoadMoreAPI::getLoadMoreList(o.text, kBase, 1, "l", "o", "t", 0, 9)),
    ROW("load-more-v2", kVerbatim,
        LoadMoreV2API::getLoadMoreV2List(o.text, kBase, 1, "l", "o", "t", 0, 9)),
    ROW("station", kVerbatim,
        MusicStationAPI::getStationSoundList(o.text, kBase, "s", "o", "c", 0, 9)),
    ROW("recommendation", kVerbatim,
        MusicRecommendAPI::getMusicRecommendation(o.text, kBase, "1001", "5")),
    ROW("music-action-log", kVerbatim,
        MusicActionLogAPI::log(o.text, kBase, "1", "a", "play", "i", "s", "")),
    ROW("play-resource", kVerbatim,
        PlayResourceAPI::getPlayResource(o.text, kBase, "dev-42", "a", "c", "cp")),
    ROW("play-resource-status", kNone,
        PlayResourceAPI::setPlayResourceStatus(kBase, "d", "a", "c", "cp", 1, 2)),
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string body;
    const Row* row = fuzz::answerRow(kRows, data, size, body);
    if (row == nullptr) return 0;
    Out out;
    if (row->call(out) != 0) return 0;
    const std::string shown = std::string(row->name) + ": " + out.text;
    rapidjson::Document document;
    fuzz::require(row->check != kVerbatim || out.text == body, "answer not handed over as it is",
                  shown);
    fuzz::require(row->check != kObject || (fuzz::parse(document, out.text) && document.IsObject()),
                  "no JSON object handed out", shown);
    return 0;
}
