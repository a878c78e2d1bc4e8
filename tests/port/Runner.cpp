// Runs every contract point against the port linked in and ends with one
// line per point that failed or was skipped: "FAIL <point>: <what was
// expected>", the summary `make port-check` shows an integrator.
#include <cctype>
#include <iostream>

#include "Contract.h"

namespace velmar::port {

std::string testName(const ::testing::TestParamInfo<Point>& info) {
    std::string name = std::to_string(info.index);
    for (unsigned char c : info.param.name.substr(0, 100))
        if (std::isalnum(c) || name.back() != '_') name += std::isalnum(c) ? char(c) : '_';
    return name;
}

std::vector<Point> joined(std::initializer_list<std::vector<Point>> parts) {
    std::vector<Point> points;
    for (const auto& part : parts)
        points.insert(points.end(), part.begin(), part.end());
    return points;
}

TEST_P(Contract, Holds) {
    const Point& point = GetParam();
    Verdict verdict;
    try {
        point.check(*makePort(), verdict);
    } catch (const Skip& skip) {
        GTEST_SKIP() << point.name << ": " << skip.reason;
    }
    if (!verdict.missed().empty()) ADD_FAILURE() << point.name << ": " << verdict.missed();
}

namespace {

class Summary : public ::testing::EmptyTestEventListener {
    void OnTestStart(const ::testing::TestInfo& test) override { mPoint = test.value_param(); }
    void OnTestPartResult(const ::testing::TestPartResult& result) override {
        if (result.type() == ::testing::TestPartResult::kSuccess) return;
        std::string text = result.message();
        if (text.rfind("Failed\n", 0) == 0) text.erase(0, 7);  // ADD_FAILURE's first line
        if (text.rfind(mPoint + ": ", 0) != 0) text = mPoint + ": " + text;  // an exception's
        mLines.push_back((result.skipped() ? "SKIP " : "FAIL ") + text.substr(0, text.find('\n')));
    }
    void OnTestProgramEnd(const ::testing::UnitTest& unit) override {
        std::cout << "\nPort contract on the " << kPortName
                  << " port: " << unit.successful_test_count() << " held, "
                  << unit.failed_test_count() << " failed, " << unit.skipped_test_count()
                  << " skipped\n";
        for (const auto& line : mLines)
            std::cout << line << std::endl;
    }
    std::string mPoint;
    std::vector<std::string> mLines;
};

}  // namespace
}  // namespace velmar::port

// "--summary": the summary alone, without gtest's own report (make port-check).
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    auto& all = ::testing::UnitTest::GetInstance()->listeners();
    if (argc > 1 && argv[1] == std::string("--summary"))
        delete all.Release(all.default_result_printer());
    all.Append(new velmar::port::Summary);
    return RUN_ALL_TESTS();
}
