// The indented stat report, compared as text: a reader of the file sees its
// members in the order the uploaded report has them.
#include "StatReport.h"

#include <gtest/gtest.h>

namespace {

TEST(StatReportTest, IndentedReportKeepsTheMemberOrder) {
    auto report = velmar::quil::detail::makeStatReport(true, "h", "2.14.3", "SN1", 0);
    report->add("boot", 3, "3");
    EXPECT_EQ(report->finish(),
              "{\n"
              "    \"hardware\": \"h\",\n"
              "    \"version\": \"2.14.3\",\n"
              "    \"serialNumber\": \"SN1\",\n"
              "    \"list\": [\n"
              "        {\n"
              "            \"source\": \"rom\",\n"
              "            \"data\": [\n"
              "                {\n"
              "                    \"t\": \"boot\",\n"
              "                    \"c\": 3,\n"
              "                    \"v\": \"3\"\n"
              "                }\n"
              "            ]\n"
              "        }\n"
              "    ]\n"
              "}");
}

}  // namespace
