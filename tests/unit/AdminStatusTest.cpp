// The stored administrator kept in line with the cloud's, on the fake port.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>
#include <vector>

#include "FakeHelpers.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/utils/ErrorType.h"

// The signed request only ever yields 0 or 604, so a service that reports an
// unbound device with 612 is stood in for at link time: tests/CMakeLists.txt
// wraps the cloud query DeviceAPI::getSuperAdmin with the function below.
#define VELMAR_CLOUD_ADMIN                                                                  \
    "_ZN6velmar4quil3api9DeviceAPI13getSuperAdminERxRKNSt7__cxx1112basic_stringIcSt11char_" \
    "traitsIcESaIcEEEb"
static std::atomic<bool> gCloudReportsUnbound{false};
velmar::utils::ErrorType realCloudAdmin(long long& userId, const std::string& baseUrl,
                                        bool master) __asm__("__real_" VELMAR_CLOUD_ADMIN);
velmar::utils::ErrorType wrappedCloudAdmin(long long& userId, const std::string& baseUrl,
                                           bool master) __asm__("__wrap_" VELMAR_CLOUD_ADMIN);
velmar::utils::ErrorType wrappedCloudAdmin(long long& userId, const std::string& baseUrl,
                                           bool master) {
    if (!gCloudReportsUnbound) return realCloudAdmin(userId, baseUrl, master);
    userId = 777;  // whatever came with it, the device is no longer bound
    return velmar::utils::ERROR_DEVICE_UNBOUND;
}

using velmar::quil::QuilConfigUtils;

namespace {

class AdminStatusTest : public fake::FakeDeviceTest {
  protected:
    // The cloud's answer naming `id` (an unbound device comes with code 612).
    static void cloudAdmin(long long id) {
        fake::pushBody("{\"code\":" + std::string(id < 0 ? "612" : "0") +
                       ",\"data\":" + std::to_string(id) + "}");
    }
    void TearDown() override {
        gCloudReportsUnbound = false;
        FakeDeviceTest::TearDown();
    }
    static std::vector<std::string> calls() { return fake::deviceCalls(); }
};

TEST_F(AdminStatusTest, UnchangedAdministratorRunsNothing) {
    fake::setDeviceValue("uid", "52001");
    cloudAdmin(52001);
    EXPECT_TRUE(QuilConfigUtils::syncAdminStatus(true));
    EXPECT_EQ(fake::calls().at(0).decodedParams().at("master"), "true");
    EXPECT_TRUE(fake::loggedExactly("admin user id not changed: 52001", 2));
    EXPECT_TRUE(calls().empty());
}

TEST_F(AdminStatusTest, BindingChangingAndUnbindingRunTheirActions) {
    cloudAdmin(52001);
    cloudAdmin(60002);
    cloudAdmin(-1);
    EXPECT_TRUE(QuilConfigUtils::syncAdminStatus(false));
    EXPECT_TRUE(fake::loggedExactly(
        "admin user id changed(admin user id: 52001, old admin user id: -1)", 2));
    EXPECT_TRUE(fake::loggedExactly("device bind, will invoke bind_device.sh", 2));
    EXPECT_TRUE(QuilConfigUtils::syncAdminStatus(false));
    EXPECT_TRUE(fake::loggedExactly(
        "admin user id changed(admin user id: 60002, old admin user id: 52001)", 2));
    EXPECT_TRUE(QuilConfigUtils::syncAdminStatus(false));
    EXPECT_TRUE(fake::loggedExactly(
        "admin user id changed(admin user id: -1, old admin user id: 60002)", 2));
    EXPECT_TRUE(fake::loggedExactly("device unbind, will invoke bind_device.sh", 2));
    EXPECT_EQ(calls(),
              (std::vector<std::string>{"bind_uid()", "uid_set(52001)", "bind_uid()",
                                        "uid_set(60002)", "dev_restore()", "uid_set(-1)"}));
    EXPECT_EQ(fake::deviceValue("uid"), "-1");
}

TEST_F(AdminStatusTest, UnboundReportRestoresTheDeviceAndStoresMinusOne) {
    fake::setDeviceValue("uid", "52001");
    gCloudReportsUnbound = true;
    EXPECT_TRUE(QuilConfigUtils::syncAdminStatus(false));
    EXPECT_TRUE(fake::loggedExactly("somehow, device unbinded, old admin user id:52001", 2));
    EXPECT_TRUE(fake::loggedExactly(
        "admin user id changed(admin user id: -1, old admin user id: 52001)", 2));
    EXPECT_EQ(calls(), (std::vector<std::string>{"dev_restore()", "uid_set(-1)"}));

    // Already unbound: the report changes nothing.
    EXPECT_TRUE(QuilConfigUtils::syncAdminStatus(false));
    EXPECT_TRUE(fake::loggedExactly("admin user id not changed: -1", 2));
    EXPECT_EQ(calls().size(), 2u);
}

TEST_F(AdminStatusTest, CloudOrStoreFailureIsFalse) {
    fake::setDeviceValue("uid", "52001");
    fake::pushFailure();
    EXPECT_FALSE(QuilConfigUtils::syncAdminStatus(false));
    EXPECT_TRUE(fake::loggedExactly(
        "DeviceAPI::getSuperAdmin() failed with code: " + errorText(utils::ERROR_HTTP_FAILED), 4));
    EXPECT_TRUE(calls().empty());

    // The bind has run by the time the store refuses the id (0 is no success).
    fake::setStatus("uid_set", 0);
    cloudAdmin(60002);
    EXPECT_FALSE(QuilConfigUtils::syncAdminStatus(false));
    EXPECT_EQ(calls(), (std::vector<std::string>{"bind_uid()", "uid_set(60002)"}));
    EXPECT_EQ(fake::deviceValue("uid"), "52001");
}

TEST_F(AdminStatusTest, UnparsableStoredIdThrowsWithTheLockReleased) {
    fake::setDeviceValue("uid", "99999999999999999999");  // passes the validity test, overflows
    cloudAdmin(52001);
    EXPECT_THROW(QuilConfigUtils::syncAdminStatus(false), std::out_of_range);
    EXPECT_TRUE(fake::calls().empty());
    ASSERT_TRUE(QuilConfigUtils::sAdminStatusMutex.try_lock());
    QuilConfigUtils::sAdminStatusMutex.unlock();
    EXPECT_TRUE(QuilConfigUtils::clearAdminStatus());
    EXPECT_EQ(calls(), std::vector<std::string>{"uid_clean()"});
    EXPECT_FALSE(fake::deviceValue("uid"));

    fake::setStatus("uid_clean", -1);
    EXPECT_FALSE(QuilConfigUtils::clearAdminStatus());
}

TEST_F(AdminStatusTest, SynchronisationsAndClearsNeverInterleave) {
    // The fake sees two platform actions at once when nothing serialises them.
    fake::slowActions(300);
    std::thread first([] { bind_uid(); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    dev_restore();
    first.join();
    ASSERT_GT(fake::overlappingActions(), 0);

    SetUp();
    fake::slowActions(5);
    constexpr int kThreads = 4;
    constexpr int kRounds = 3;
    // Every synchronisation meets an administrator it has not stored: each binds.
    for (int i = 1; i <= kThreads * kRounds; ++i)
        cloudAdmin(1000 + i);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([] {
            for (int r = 0; r < kRounds; ++r) {
                QuilConfigUtils::syncAdminStatus(false);
                QuilConfigUtils::clearAdminStatus();
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(fake::overlappingActions(), 0);
    const auto made = calls();
    EXPECT_EQ(std::count(made.begin(), made.end(), "bind_uid()"), kThreads * kRounds);
    EXPECT_EQ(std::count(made.begin(), made.end(), "uid_clean()"), kThreads * kRounds);
}

}  // namespace
