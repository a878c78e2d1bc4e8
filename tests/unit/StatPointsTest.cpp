#include "velmar/quil/StatPointsUtils.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <tuple>
#include <vector>

#include "FakeHelpers.h"

using velmar::quil::StatPointsUtils;
namespace fs = std::filesystem;

namespace {

using Record = std::tuple<std::string, long long, std::string>;

constexpr size_t kBudget = 262144;

// "stat_points_none NAME=VALUE" padded with 'x' in the value to `length` bytes.
std::string statLine(const std::string& name, size_t length) {
    std::string line = "stat_points_none " + name + "=";
    return line + std::string(length - line.size(), 'x');
}

class StatPointsTest : public fake::FakeTest {
  protected:
    void SetUp() override {
        FakeTest::SetUp();
        char pattern[] = "/tmp/velmar-stat-XXXXXX";
        ASSERT_NE(mkdtemp(pattern), nullptr);
        dir_ = pattern;
        file_ = (dir_ / "stat.log").string();
    }
    void TearDown() override {
        std::error_code ignored;
        fs::remove_all(dir_, ignored);
        FakeTest::TearDown();
    }

    void write(const std::string& content) { std::ofstream(file_, std::ios::binary) << content; }

    // The records of a report.
    static std::vector<Record> records(const std::string& report) {
        rapidjson::Document doc;
        doc.Parse(report.data(), report.size());
        std::vector<Record> out;
        if (doc.HasParseError() || !doc.IsObject() || !doc.HasMember("list")) {
            ADD_FAILURE() << "not a report: " << report.substr(0, 200);
            return out;
        }
        for (const auto& r : doc["list"][0]["data"].GetArray()) {
            out.emplace_back(std::string(r["t"].GetString(), r["t"].GetStringLength()),
                             r["c"].GetInt64(),
                             std::string(r["v"].GetString(), r["v"].GetStringLength()));
        }
        return out;
    }
    std::vector<Record> collect() {
        return records(StatPointsUtils::collectStatPoints(file_, false));
    }

    fs::path dir_;
    std::string file_;
};

TEST_F(StatPointsTest, CompactReportCarriesIdentityThenRecordsThenHealthCounts) {
    fake::setDeviceValue("model", "quil.speaker.v2");
    fake::setDeviceValue("version", "2.14.3");
    fake::setDeviceValue("sn", "4417/20260001");
    write(
        "stat_points_none boot=3\n"
        "short\n" +
        std::string(5000, 'L') + "\nstat_points_none wifi=on\n\n");
    EXPECT_EQ(StatPointsUtils::collectStatPoints(file_, false),
              "{\"hardware\":\"quil.speaker.v2\",\"version\":\"2.14.3\","
              "\"serialNumber\":\"4417/20260001\",\"list\":[{\"source\":\"rom\",\"data\":["
              "{\"t\":\"boot\",\"c\":1,\"v\":\"3\"},{\"t\":\"wifi\",\"c\":1,\"v\":\"on\"},"
              "{\"t\":\"quillog_long_line_count\",\"c\":1,\"v\":\"1\"},"
              "{\"t\":\"quillog_bad_line_count\",\"c\":2,\"v\":\"2\"}]}]}");
}

TEST_F(StatPointsTest, LineLengthDecidesBetweenBadSplitAndLong) {
    write(statLine("a", 19) + "\n" + statLine("b", 20) + "\n" + statLine("c", 4096) + "\n" +
          statLine("d", 4097) + "\n");
    EXPECT_EQ(collect(), (std::vector<Record>{{"b", 1, "x"},
                                              {"c", 1, std::string(4096 - 19, 'x')},
                                              {"quillog_long_line_count", 1, "1"},
                                              {"quillog_bad_line_count", 1, "1"}}));
}

TEST_F(StatPointsTest, LineIsAStatOnlyWhenBothSplitsGiveExactlyTwoFields) {
    write(
        "stat_points_none =xyzzy\n"          // empty name: still two fields
        "stat_points_none name=\n"           // empty value
        "stat_points_none a=b=c\n"           // three fields after "="
        "stat_points_none  a=bcd\n"          // two spaces: three fields
        "stat_points_none name=two words\n"  // a space in the value
        "stat_points_none no_equals_here\n"  // no "=": no fields at all
        "stat_points_none_no_space=abc\n"    // no space: no fields at all
        "stat_points_nonX name=value\n"      // another marker word
        "stat_points_none a=1 \n"            // trailing space: three fields
        "stat_points_none CR=1\r\n" +        // a carriage return is part of the value
        std::string("stat_points_none n\0l=v\0lue\nstat_points_none last=1", 50));  // NULs, no \n
    EXPECT_EQ(collect(), (std::vector<Record>{{"", 1, "xyzzy"},
                                              {"name", 1, ""},
                                              {"CR", 1, "1\r"},
                                              {std::string("n\0l", 3), 1, std::string("v\0lue", 5)},
                                              {"last", 1, "1"},
                                              {"quillog_bad_line_count", 7, "7"}}));
}

TEST_F(StatPointsTest, ByteBudgetAllowsExactly262144BytesOfLineText) {
    // 64 lines of 4096 bytes: exactly the budget (newlines do not count).
    std::string full;
    for (int i = 0; i < 64; ++i)
        full += statLine("n", 4096) + "\n";
    // An empty line after them adds nothing to the total.
    write(full + "\n");
    std::vector<Record> whole = collect();
    ASSERT_EQ(whole.size(), 65u);
    EXPECT_EQ(whole.back(), Record("quillog_bad_line_count", 1, "1"));

    // One byte more stops the reading at that line: nothing after it counts.
    write(full + "x\n" + "short\n" + std::string(5000, 'L') + "\n");
    std::vector<Record> cut = collect();
    ASSERT_EQ(cut.size(), 65u);
    EXPECT_EQ(std::get<0>(cut[63]), "n");
    EXPECT_EQ(cut.back(), Record("quillog_big_log_file", 1, "1"));

    // The counts gathered before the stop still follow the big-file record.
    write("bad\n" + std::string(kBudget, 'L'));
    EXPECT_EQ(collect(), (std::vector<Record>{{"quillog_big_log_file", 1, "1"},
                                              {"quillog_bad_line_count", 1, "1"}}));
}

// Compared as text: a reader of the file sees its members in the order the
// uploaded report has them.
TEST_F(StatPointsTest, PrettyReportIndentsByFourSpacesInTheCompactOrder) {
    fake::setDeviceValue("model", "h");
    fake::setDeviceValue("version", "2.14.3");
    fake::setDeviceValue("sn", "SN1");
    write("stat_points_none boot=3\nbad\nbad\nbad\n");
    EXPECT_EQ(
        StatPointsUtils::collectStatPoints(file_, true),
        "{\n    \"hardware\": \"h\",\n    \"version\": \"2.14.3\",\n"
        "    \"serialNumber\": \"SN1\",\n    \"list\": [\n        {\n"
        "            \"source\": \"rom\",\n            \"data\": [\n"
        "                {\n                    \"t\": \"boot\",\n"
        "                    \"c\": 1,\n                    \"v\": \"3\"\n                },\n"
        "                {\n                    \"t\": \"quillog_bad_line_count\",\n"
        "                    \"c\": 3,\n                    \"v\": \"3\"\n"
        "                }\n            ]\n        }\n    ]\n}");
}

TEST_F(StatPointsTest, CompactReportIsByteForByteWhatRapidJsonWrites) {
    fake::setDeviceValue("model", "q\"u\nil\\v2");
    std::string bytes;
    for (int c = 1; c < 0x20; ++c)
        if (c != '\n') bytes += static_cast<char>(c);
    bytes += "\"\\/\x7f\xc3\xa9\xe6\x99\xb4\xff";
    write("stat_points_none k" + bytes + "=" + bytes + "\n" +
          std::string("stat_points_none n=\0", 20) + "\n");
    const std::string compact = StatPointsUtils::collectStatPoints(file_, false);
    rapidjson::Document doc;
    doc.Parse(compact.data(), compact.size());
    ASSERT_FALSE(doc.HasParseError());
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    doc.Accept(writer);
    EXPECT_EQ(compact, std::string(buffer.GetString(), buffer.GetSize()));
    EXPECT_EQ(records(compact).at(0), Record("k" + bytes, 1, bytes));
}

TEST_F(StatPointsTest, EmptyOrUnreadableSourcesGiveAnEmptyReport) {
    const std::string empty =
        "{\"hardware\":\"\",\"version\":\"\",\"serialNumber\":\"\","
        "\"list\":[{\"source\":\"rom\",\"data\":[]}]}";
    write("");
    EXPECT_EQ(StatPointsUtils::collectStatPoints(file_, false), empty);
    EXPECT_EQ(StatPointsUtils::collectStatPoints((dir_ / "missing").string(), false), empty);
    EXPECT_TRUE(records(StatPointsUtils::collectStatPoints(dir_.string(), true)).empty());
    // A FIFO with no writer must not block the caller.
    const std::string fifo = (dir_ / "fifo").string();
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(StatPointsUtils::collectStatPoints(fifo, false), empty);
    EXPECT_TRUE(fake::logs().empty());
}

// Bytes this thread has read through read(2) so far; -1 where not accounted.
long long bytesRead() {
    std::ifstream io("/proc/thread-self/io");
    std::string key;
    long long value = -1;
    while (io >> key >> value && key != "rchar:") {
    }
    return key == "rchar:" ? value : -1;
}

TEST_F(StatPointsTest, HugeFileCostsOnlyTheBudget) {
    // 1 GiB of NUL bytes without a newline, sparse: nothing is written.
    write("");
    ASSERT_EQ(::truncate(file_.c_str(), 1LL << 30), 0);
    const long long before = bytesRead();
    EXPECT_EQ(collect(), (std::vector<Record>{{"quillog_big_log_file", 1, "1"}}));
    const long long after = bytesRead();
    if (before < 0 || after < 0) GTEST_SKIP() << "no per-thread I/O accounting here";
    EXPECT_LE(after - before, static_cast<long long>(kBudget + 16384));
}

}  // namespace
