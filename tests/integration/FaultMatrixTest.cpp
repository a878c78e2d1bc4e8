// Every exported call that reaches the network, against every fault the local
// cloud can script: the status each call gives, and that it returns within
// its time-out plus one second. Rows name an expectation profile; most calls
// share one.
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

#include "CloudFixture.h"
#include "Endpoints.h"

using namespace velmar::quil::api;
using quilcloud::Scripted;
using velmar::quil::QuilConfigUtils;
using velmar::quil::VE_PUSH_ALARM;
using velmar::quil::VePushUtils;
using namespace velmar::utils;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kFalse = 0;
constexpr int kTrue = 1;
constexpr long long kAdmin = 52001;

enum class Fault {
    Refused,         // nothing listens where the call goes
    ResetMidAnswer,  // headers sent, then the connection reset
    Truncated,       // half the announced body, then closed
    Oversized,       // a body beyond the transport's cap
    NonJson,         // 200 with an HTML page
    ServerError,     // 503 with the service's JSON error
    NotModified,     // 304 without a body
    Trickle,         // the normal answer, a few bytes at a time
};

// In the order of `Fault`.
const char* const kFaultNames[] = {"Refused", "ResetMidAnswer", "Truncated",   "Oversized",
                                   "NonJson", "ServerError",    "NotModified", "Trickle"};

// What both clouds answer under each fault but Refused, where they are stopped.
Scripted scripted(Fault fault) {
    const std::string document = "{\"code\":0,\"data\":{\"token\":\"t\",\"expiresIn\":60}}";
    Scripted page = Scripted::answer(200, "<html><body>Bad gateway</body></html>");
    page.contentType = "text/html";
    const Scripted byFault[] = {
        {},  // Refused
        Scripted::resetMidAnswer(document),
        Scripted::truncate(document),
        Scripted::oversize(8 * 1024 * 1024 + 1),
        page,
        Scripted::answer(503, "{\"code\":503,\"message\":\"service unavailable\"}"),
        Scripted::answer(304, ""),
        Scripted::trickle(4, 2),
    };
    return byFault[static_cast<int>(fault)];
}

// What a call gives under each kind of fault.
struct Expect {
    int failed;       // no answer: refused, reset, truncated, oversized, silent
    int nonJson;      // 200 that is not JSON
    int serverError;  // 503 {"code":503,...}
    int notModified;  // 304, empty body
    int answered;     // the service's own answer, trickled
};

// Thin endpoints hand the answer back unread: only a missing answer fails.
const Expect kThin{ERROR_HTTP_FAILED, ERROR_NONE, ERROR_NONE, ERROR_NONE, ERROR_NONE};
// Endpoints that need their fields in the answer.
const Expect kParsed{ERROR_HTTP_FAILED, ERROR_HTTP_FAILED, ERROR_HTTP_FAILED, ERROR_HTTP_FAILED,
                     ERROR_NONE};
// Any JSON answer is read, whatever its code (registration check, keep-alive key).
const Expect kAnyJson{ERROR_HTTP_FAILED, ERROR_HTTP_FAILED, ERROR_NONE, ERROR_HTTP_FAILED,
                      ERROR_NONE};
// Reports of delivery (true as soon as an answer came, whatever its status).
const Expect kDelivered{kFalse, kTrue, kTrue, kTrue, kTrue};
// True only for an answer the call understood.
const Expect kUnderstood{kFalse, kFalse, kFalse, kFalse, kTrue};
// Never reports a failure; the outcome is printed instead.
const Expect kPrinted{kFalse, kFalse, kFalse, kFalse, kFalse};
// A refusal (code 503) is the service's "other code"; an unreadable answer is 610.
const Expect kCodeMapped{ERROR_HTTP_FAILED, ERROR_INVALID_RESPONSE, ERROR_GENERAL,
                         ERROR_INVALID_RESPONSE, ERROR_NONE};

// What the calls need besides the fixture's configuration.
struct Env {
    std::string base;        // the device cloud service
    std::string token;       // an account token for the user profile
    std::string logArchive;  // a file to upload
};

// Scratch out-parameters, fresh for every call.
struct Out {
    std::string r, s;
    long long n = 0;
    unsigned long long u = 0;
    int i = 0, status = -1;
    std::vector<long long> ids;
    TencentAccount account;
};

struct Row {
    Expect expect;
    const char* name;
    int (*call)(const Env&, Out&);
    int timeoutMs = 15000;
    bool account = false;  // reaches the fixed account address
};

// A row's name and call: the function called, then its arguments, with the
// scratch out-parameters in `o`.
// clang-format off
#define CALL(fn, ...) \
    #fn, [](const Env& e, Out& o) -> int { return (void)e, (void)o, fn(__VA_ARGS__); }
// clang-format on

const std::vector<Row> kRows = {
    {kThin, "DeviceAPI::request with status",
     [](const Env& e, Out& o) -> int {
         return DeviceAPI::request(o.r, o.status, e.base, "/device/presence/", "GET", {});
     }},
    {kThin, CALL(DeviceAPI::request, o.r, e.base, "/device/presence/", "GET", {})},
    {kAnyJson, CALL(DeviceAPI::checkRegistrationStatus, o.r, e.base)},
    {kParsed, CALL(DeviceAPI::getSuperAdmin, o.n, e.base, true)},
    {kAnyJson, CALL(DeviceAPI::keepAliveKeyGet, o.r, e.base)},
    // No status: the key stays empty unless the cloud gave one.
    {kUnderstood, "QuilConfigUtils::keepAliveKeyGet",
     [](const Env&, Out& o) {
         QuilConfigUtils::keepAliveKeyGet(o.r);
         return o.r.empty() ? kFalse : kTrue;
     }},
    {kUnderstood, CALL(QuilConfigUtils::syncAdminStatus, true)},
    {kThin, CALL(PresenceAPI::getPresence, o.r, e.base)},
    {kThin, CALL(PingAPI::pingDevice, o.r, e.base, "2")},
    {kThin, CALL(NotificationAPI::send, o.r, e.base, VE_PUSH_ALARM, "t", "a", "{}")},
    {kDelivered, CALL(VePushUtils::notify, o.r, VE_PUSH_ALARM, "{}")},
    {kThin, CALL(ClientInfoListAPI::getClientList, o.r, e.base)},
    {kThin, CALL(VoipDurationAPI::getStatus, o.r, e.base)},
    {kThin, CALL(VoipDurationAPI::add, o.r, e.base, o.s = "30")},
    {kThin, CALL(CommonConfigAPI::getConfig, o.r, e.base, o.s = "night_mode")},
    {kParsed, CALL(PrivacySettingsAPI::setPrivacySettings, e.base, kAdmin, "{}")},
    {kParsed, CALL(PrivacySettingsAPI::getPrivacySettings, o.r, e.base, kAdmin)},
    {{ERROR_HTTP_FAILED, ERROR_TOKEN_INVALID, ERROR_NONE, ERROR_TOKEN_INVALID, ERROR_NONE},
     CALL(AIServiceTokenAPI::getServiceToken, o.r, o.n, e.base)},
    // An answer it cannot use still gives the request's 0.
    {kThin, CALL(VemcTokenAPI::getToken, o.r, e.base)},
    {kCodeMapped, CALL(VEOTTokenAPI::upload, "veot", "sess-1", "52001", e.base)},
    {{ERROR_HTTP_FAILED, ERROR_INVALID_RESPONSE, ERROR_INVALID_RESPONSE, ERROR_INVALID_RESPONSE,
      ERROR_NONE},
     CALL(VEOTTokenAPI::download, o.r, o.s, o.i, e.base)},
    {kCodeMapped, CALL(TencentAccountAPI::getTencentAccount, o.account, e.base)},
    {kThin, CALL(DeviceSnCmei::getDeviceCmeiBySn, o.r, false)},
    {kThin, CALL(DeviceSnCtei::getDeviceCteiBySn, o.r, true)},
    {kThin, CALL(DeviceSnProfile::getDeviceProfileBySn, o.r, false)},
    {kThin, CALL(CarrierOperator::getCarrierOperatorStatus, o.r, false)},
    // Both report the request's status only; what the answer said is logged.
    {kThin, CALL(CmccAndlinkAPI::getDeviceID, o.r, e.base)},
    {kThin, CALL(CmccAndlinkAPI::setDeviceID, "CMCC-1", e.base)},
    {kThin, CALL(DeviceStatusAPI::setDeviceStatus, e.base, "mute", "on")},
    {kParsed, CALL(DeviceStatusAPI::getDeviceStatus, o.r, e.base, "volume")},
    {kThin, CALL(WorkDayConfigAPI::getWorkDayConfig, o.r, e.base, "")},
    {kThin, CALL(StereoAPI::SetServer, o.r, e.base)},
    {kParsed, CALL(MusicSongInfoAPI::getSongListInfo, o.r, e.base, "[1001]", 0, -1)},
    {kParsed, CALL(PlayListV2API::getLists, o.ids, e.base)},
    {kParsed, CALL(PlayListV2API::getSongsInList, o.r, 4294967296LL, 0, 2, e.base)},
    {kParsed, CALL(PlayListV2API::getSongsInChannel, o.r, 502, 0, 2, e.base)},
    {kParsed, CALL(MusicAlbumAPI::getMusicAlbum, o.r, e.base, "al-1001")},
    {kParsed, CALL(MusicPlayListAPI::getMusicPlayList, o.r, e.base, "pl-morning")},
    {kThin, CALL(MusicRecommendAPI::getMusicRecommendation, o.r, e.base, "52001", "2")},
    {kThin,
     CALL(MusicStationAPI::getStationSoundList, o.r, e.base, "st-7", "wavely", "news", 0, 2)},
    {kThin, CALL(LoadMoreAPI::getLoadMoreList, o.r, e.base, kAdmin, "story-31", "storyhall",
                 "story", 0, 2)},
    {kThin, CALL(LoadMoreV2API::getLoadMoreV2List, o.r, e.base, kAdmin, "story-31", "storyhall",
                 "story", 0, 2)},
    {kThin, CALL(PlayResourceAPI::getPlayResource, o.r, e.base, "7300123456", "alarm-1", "course-7",
                 "kidsacademy")},
    {kThin, CALL(PlayResourceAPI::setPlayResourceStatus, e.base, "7300123456", "alarm-1",
                 "course-7", "kidsacademy", 1, 5)},
    {kThin,
     CALL(MusicActionLogAPI::log, o.r, e.base, "52001", "app", "play", "1001", "song", "{}")},
    // Two attempts, the second through the resolver list.
    {kUnderstood,
     CALL(UpgradeAPI::checkUpgrade, o.r, o.n, "quil.speaker.v2", "f-01", "2.14.3", "release",
          "zh_CN", "CN"),
     30000},
    // Any status but 200 is a transport failure here.
    {{ERROR_HTTP_FAILED, ERROR_INVALID_RESPONSE, ERROR_HTTP_FAILED, ERROR_HTTP_FAILED, ERROR_NONE},
     CALL(TimeSyncAPI::request, o.n)},
    {kDelivered, CALL(LogUploadAPI::upload, o.r, "common-a-b-c", "2.14.3", "dev-1", "log")},
    // Its own libcurl: true once any answer arrived, but one beyond the
    // port's cap is refused as the port refuses it, so that a hostile
    // service cannot exhaust a small device's memory.
    {{kFalse, kTrue, kTrue, kTrue, kTrue},
     CALL(LogUploadAPI::uploadLite, o.r, "common-l", "2.14.3", "dev-1", "1700000000", e.logArchive),
     100000},
    {kPrinted, "ActionLogAPI::upload",
     [](const Env& e, Out& o) {
         ::testing::internal::CaptureStdout();
         const int status = ActionLogAPI::upload(o.r, "d-1", "{}", e.base);
         ::testing::internal::GetCapturedStdout();
         return status;
     }},
    {kThin, CALL(BindAPI::bind, o.r, kAdmin, "payload")},
    {kParsed, CALL(GetUserProfileAPI::request, o.u, "app-1", e.token), 15000, true},
    // Last: once a renewal succeeded the cloud asks every later request
    // for the new pair, which the device has not stored.
    {kThin, CALL(DeviceAPI::requestDeviceTransfer, o.r, e.base)},
    {kThin, CALL(DeviceAPI::requestDeviceTokenV2, o.r, e.base)},
};

#undef CALL

const Row& row(const std::string& name) {
    for (const Row& r : kRows)
        if (name == r.name) return r;
    throw std::out_of_range(name);
}

int expected(const Row& r, Fault fault) {
    const Expect& e = r.expect;
    // In the order of `Fault`.
    const int byFault[] = {e.failed,  e.failed,      e.failed,      e.failed,
                           e.nonJson, e.serverError, e.notModified, e.answered};
    return byFault[static_cast<int>(fault)];
}

struct Outcome {
    int status = -1;
    long long elapsedMs = 0;
};

Outcome run(const Row& r, const Env& env) {
    const auto start = Clock::now();
    Outcome o;
    Out out;
    o.status = r.call(env, out);
    o.elapsedMs =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
    return o;
}

class FaultMatrixTest : public velmar::testing::LoopbackResolverFixture {
  protected:
    void SetUp() override {
        LoopbackResolverFixture::SetUp();
        bindAdministrator(kAdmin);
        store("iot_did", "iot-7300123456");
        env_.base = baseUrl();
        env_.logArchive = (root() / "logs.tar.gz").string();
        std::ofstream(env_.logArchive) << "archive";
        // What the reading calls find in the cloud when it answers.
        ASSERT_EQ(DeviceStatusAPI::setDeviceStatus(baseUrl(), "volume", "40"), ERROR_NONE);
        ASSERT_EQ(VEOTTokenAPI::upload("veot", "sess-1", "52001", baseUrl()), ERROR_NONE);
        startAccountService();
        cloud().clearReceived();
    }

    // Without the account service the user-profile row is left out.
    void startAccountService() {
        if (startAccountCloud()) env_.token = accountToken("userId=4242&clientId=app-1");
    }

    // Applies `scripted` to every path of both clouds.
    void scriptEverywhere(const Scripted& scripted) {
        cloud().script("*", scripted);
        if (account_) account_->script("*", scripted);
    }

    Env env_;
};

class FaultMatrixByFault : public FaultMatrixTest, public ::testing::WithParamInterface<Fault> {};

TEST_P(FaultMatrixByFault, EveryCallGivesItsStatusInTime) {
    if (GetParam() == Fault::Refused) {
        cloud().stop();
        if (account_) account_->stop();
    } else {
        scriptEverywhere(scripted(GetParam()));
    }
    for (const Row& r : kRows) {
        if (r.account && !account_) continue;
        SCOPED_TRACE(r.name);
        const Outcome o = run(r, env_);
        EXPECT_EQ(o.status, expected(r, GetParam()));
        EXPECT_LT(o.elapsedMs, r.timeoutMs + 1000);
    }
}

void PrintTo(Fault fault, std::ostream* out) {
    *out << kFaultNames[static_cast<int>(fault)];
}

INSTANTIATE_TEST_SUITE_P(Faults, FaultMatrixByFault,
                         ::testing::Values(Fault::Refused, Fault::ResetMidAnswer, Fault::Truncated,
                                           Fault::Oversized, Fault::NonJson, Fault::ServerError,
                                           Fault::NotModified, Fault::Trickle),
                         [](const auto& info) { return ::testing::PrintToString(info.param); });

// The two faults the transport meets nowhere else are what they claim.
TEST_F(FaultMatrixTest, ResetComesAfterTheHeadersAndATrickleArrivesWhole) {
    auto get = [this](int& status, std::string& body, std::string& message) {
        velmar::utils::ErrorType error = ERROR_NONE;
        return velmar::http::HTTPRequest::httpRequest(status, body, error, message, baseUrl(),
                                                      "/music/album_info", "albumId=al-1001", "GET",
                                                      {}, 15000);
    };
    int status = 0;
    std::string whole, body, message;
    ASSERT_TRUE(get(status, whole, message)) << message;

    cloud().script("*", Scripted::resetMidAnswer(whole));
    EXPECT_FALSE(get(status, body, message));
    EXPECT_EQ(status, 200);
    EXPECT_NE(message.find("reset"), std::string::npos) << message;

    cloud().script("*", Scripted::trickle(4, 2));
    const auto start = Clock::now();
    ASSERT_TRUE(get(status, body, message)) << message;
    EXPECT_EQ(body, whole);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(2 * (whole.size() / 4 - 1)));
}

// A server that accepts and never answers costs a whole time-out, so it is
// tried on one call per transport overload, all at once.
TEST_F(FaultMatrixTest, SilentServerCostsOneTimeOutPerTransportOverload) {
    const std::vector<std::pair<const char*, const char*>> silent = {
        {"PresenceAPI::getPresence", "/device/presence/"},  // base URL and path
        {"TimeSyncAPI::request", "/time/sync"},             // full URL
        {"UpgradeAPI::checkUpgrade", "/rs/grayupgrade/*"},  // full URL with resolvers
        {"BindAPI::bind", "/bind/"},                        // multi-valued form
    };
    for (const auto& [name, path] : silent)
        cloud().script(path, Scripted::delay(20000));
    // The upgrade check's first attempt fails at once, so that its retry
    // through the resolver list is the one that meets the silence.
    Scripted once = Scripted::reset();
    once.times = 1;
    cloud().script("/rs/grayupgrade/*", once);

    std::vector<Outcome> outcomes(silent.size());
    std::vector<std::thread> threads;
    for (size_t i = 0; i < silent.size(); ++i)
        threads.emplace_back([&, i] { outcomes[i] = run(row(silent[i].first), env_); });
    for (auto& thread : threads)
        thread.join();
    for (size_t i = 0; i < silent.size(); ++i) {
        const Row& r = row(silent[i].first);
        SCOPED_TRACE(r.name);
        EXPECT_EQ(outcomes[i].status, r.expect.failed);
        EXPECT_GE(outcomes[i].elapsedMs, 15000 - 100) << "the time-out is the call's";
        EXPECT_LT(outcomes[i].elapsedMs, r.timeoutMs + 1000);
    }
    EXPECT_EQ(cloud().received("/rs/grayupgrade/v2/quil.speaker.v2").size(), 2u);
}

}  // namespace
