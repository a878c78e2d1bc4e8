// quilctl doctor against the local cloud over HTTPS: a healthy device, then
// each cause of a device that cannot reach the cloud, one at a time.
#include <ifaddrs.h>
#include <net/if.h>

#include <algorithm>
#include <ctime>
#include <functional>

#include "CloudFixture.h"
#include "doctor/Doctor.h"
#include "host/ConnectionRules.h"

namespace {

using namespace velmar::testing;
using quilctl::doctor::Finding;
using quilctl::doctor::Verdict;

class DoctorTest;

struct Broken {
    const char* name;
    // Breaks one thing and returns the check that must report it.
    std::function<std::string(DoctorTest&)> breakIt;
    Verdict verdict;
    const char* cause;
    bool asksSystemResolver = false;  // only where no packet can leave loopback
};

// True inside a network namespace that has nothing up but loopback, where a
// query to the system's resolver fails before any packet is sent.
bool onlyLoopbackIsUp() {
    ifaddrs* all = nullptr;
    if (getifaddrs(&all) != 0) return false;
    bool only = true;
    for (const ifaddrs* a = all; a != nullptr; a = a->ifa_next) {
        if ((a->ifa_flags & IFF_UP) != 0 && (a->ifa_flags & IFF_LOOPBACK) == 0) only = false;
    }
    freeifaddrs(all);
    return only;
}

class DoctorTest : public TlsCloudFixture {
  public:  // the rows reach the fixture
    using CloudFixture::cloud;
    using CloudFixture::root;
    using CloudFixture::servicesAtCloud;
    using CloudFixture::store;
    using CloudFixture::writeConfig;

    void SetUp() override {
        TlsCloudFixture::SetUp();
        store("channel", "release");
        fs::permissions(root() / "data/device/channel_secret",
                        fs::perms::owner_read | fs::perms::owner_write);
        savedBuildTime_ = velmar::http::detail::buildTime();
    }
    void TearDown() override {
        velmar::http::detail::setBuildTimeForTest(savedBuildTime_);
        other_.reset();
        TlsCloudFixture::TearDown();
    }

    std::vector<Finding> diagnose() { return quilctl::doctor::run({2000, 20000}); }

    // A second HTTPS cloud serving the log service; its CA trusted or not.
    std::string otherCloud(bool trusted, long long notBeforeOffsetSeconds) {
        quilcloud::Cloud::Options options;
        options.tls = true;
        options.workDir = (root() / "other").string();
        options.certificateNotBeforeOffsetSeconds = notBeforeOffsetSeconds;
        fs::create_directories(options.workDir);
        other_ = std::make_unique<quilcloud::Cloud>(options);
        EXPECT_TRUE(other_->start()) << other_->error();
        if (trusted) {
            const fs::path bundle = root() / "bundle.pem";
            std::ofstream(bundle) << readFile(cloud().caFile()) << readFile(other_->caFile());
            setenv("VELMAR_CA_FILE", bundle.c_str(), 1);
        }
        servicesAtCloud(other_->baseUrl() + "/log");
        return "127.0.0.1:" + std::to_string(other_->port()) + " tls";
    }

  private:
    long long savedBuildTime_ = 0;
    std::unique_ptr<quilcloud::Cloud> other_;
};

TEST_F(DoctorTest, HealthyDeviceHasEveryCheckOkButAMissingLogDaemon) {
    const std::vector<Finding> findings = diagnose();
    const std::string json = quilctl::doctor::toJson(findings);
    EXPECT_EQ(json.find(SampleDevice::channelSecret), std::string::npos) << "credential shown";
    // What each area must have said, at the least.
    for (const char* check : {"messaging.conf", "sTimeSyncURL", "sn", "channel_secret",
                              "build time", "time service offset", "presence", "/dev/log"}) {
        EXPECT_TRUE(std::any_of(findings.begin(), findings.end(), [check](const Finding& f) {
            return f.check == check;
        })) << check;
    }
    int network = 0;
    for (const auto& f : findings) {
        SCOPED_TRACE(f.check + ": " + f.value + " " + f.cause);
        network += f.area == "network" ? 1 : 0;
        if (f.check == "/dev/log")  // the sandbox has no log daemon
            EXPECT_TRUE(f.verdict == Verdict::Ok || f.cause == "no-log-daemon");
        else
            EXPECT_EQ(f.verdict, Verdict::Ok);
    }
    EXPECT_EQ(network, 4) << "one host:port, contacted once: name, connect, tls, http";
    EXPECT_LE(quilctl::doctor::exitCode(findings), 1);
}

// A row that writes one device file; its finding carries the file's name.
std::function<std::string(DoctorTest&)> storing(const char* file, const std::string& value) {
    return [file, value](DoctorTest& t) {
        t.store(file, value);
        return std::string(file);
    };
}

// A row that points the log service at `url`; `check` reports it.
std::function<std::string(DoctorTest&)> logAt(const char* url, const char* check) {
    return [url, check](DoctorTest& t) {
        t.servicesAtCloud(url);
        return std::string(check);
    };
}

const Broken kBroken[] = {
    {"MissingKey",
     [](DoctorTest& t) {
         t.writeConfig({{"sQuilAPIURL", t.cloud().baseUrl()},
                        {"sTimeSyncURL", t.cloud().baseUrl() + "/time/sync"}});
         return std::string("sVeWiFiAPIURL");
     },
     Verdict::Fail, "key-missing"},
    {"MalformedUrl", logAt("htps//127.0.0.1/log", "sVeWiFiLOGURL"), Verdict::Fail, "url-malformed"},
    {"MissingDeviceFile",
     [](DoctorTest& t) {
         fs::remove(t.root() / "data/device/deviceid");
         return std::string("deviceid");
     },
     Verdict::Fail, "file-missing"},
    {"EmptyDeviceFile", storing("model", ""), Verdict::Fail, "file-empty"},
    {"StrayCarriageReturn", storing("sn", std::string(SampleDevice::sn) + "\r"), Verdict::Warn,
     "control-character"},
    {"SecondLine", storing("deviceid", "7300123456\n7300123457"), Verdict::Fail,
     "control-character"},
    {"WorldReadableCredential",
     [](DoctorTest& t) {
         fs::permissions(t.root() / "data/device/channel_secret", fs::perms::others_read,
                         fs::perm_options::add);
         return std::string("channel_secret mode");
     },
     Verdict::Warn, "readable-by-others"},
    {"UnparseableAdministrator", storing("uid", "12ab"), Verdict::Warn, "uid-unparseable"},
    {"ClockBeforeBuild",
     [](DoctorTest&) {
         velmar::http::detail::setBuildTimeForTest(std::time(nullptr) + 86400LL * 10);
         return std::string("build time");
     },
     Verdict::Fail, "clock-before-build"},
    // Resolution fails inside the loopback-only namespace: no packet leaves.
    {"NameDoesNotResolve", logAt("https://log.doctor.invalid/log", "log.doctor.invalid:443 name"),
     Verdict::Fail, "name-unresolved", true},
    // Port 1 on loopback: only root could listen there, and nothing does.
    {"PortDoesNotAnswer", logAt("http://127.0.0.1:1/log", "127.0.0.1:1 connect"), Verdict::Fail,
     "port-unanswered"},
    {"UntrustedCertificate", [](DoctorTest& t) { return t.otherCloud(false, 0); }, Verdict::Fail,
     "certificate-untrusted"},
    {"CertificateNotYetValid", [](DoctorTest& t) { return t.otherCloud(true, 3600); },
     Verdict::Fail, "certificate-not-yet-valid"},
    {"RefusedTokenPair",
     [](DoctorTest& t) {
         t.cloud().registry().update(SampleDevice::deviceId, [](quilcloud::Device& d) {
             d.deviceToken = "dt2-issued-by-the-cloud-0001";
             d.deviceTokenSign = "sign-issued-by-the-cloud-0001";
         });
         t.store("device_token", "dt2-never-issued-0000000000");
         t.store("device_token_sign", "sign-never-issued-000000000");
         return std::string("presence");
     },
     Verdict::Fail, "token-refused"},
};

void PrintTo(const Broken& row, std::ostream* out) {
    *out << row.name;
}

class DoctorBrokenTest : public DoctorTest, public ::testing::WithParamInterface<Broken> {};

TEST_P(DoctorBrokenTest, EachCauseIsFoundAndNamed) {
    if (GetParam().asksSystemResolver && !onlyLoopbackIsUp()) {
        GTEST_SKIP() << "would ask the system's resolver outside a loopback-only namespace";
    }
    const std::string check = GetParam().breakIt(*this);
    const std::vector<Finding> findings = diagnose();
    const Finding* found = nullptr;
    for (const auto& f : findings) {
        if (f.check == check) found = &f;
    }
    ASSERT_NE(found, nullptr) << "no finding for " << check << " in "
                              << quilctl::doctor::toTable(findings);
    EXPECT_EQ(found->verdict, GetParam().verdict) << found->value;
    EXPECT_EQ(found->cause, GetParam().cause) << found->value;
    EXPECT_FALSE(found->advice.empty());
    EXPECT_EQ(quilctl::doctor::exitCode(findings), GetParam().verdict == Verdict::Fail ? 2 : 1);
    EXPECT_EQ(quilctl::doctor::toJson(findings).find(SampleDevice::channelSecret),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(OneCause, DoctorBrokenTest, ::testing::ValuesIn(kBroken),
                         [](const ::testing::TestParamInfo<Broken>& info) {
                             return std::string(info.param.name);
                         });

}  // namespace
