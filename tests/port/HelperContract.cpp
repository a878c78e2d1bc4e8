// The helpers: JSON readers, digests and encodings against published test
// vectors, random bytes, UUIDs, the clock, the configuration file, commands
// and whole-file replacement.
#include <json-c/json.h>

#include <cstring>
#include <ctime>
#include <regex>
#include <set>
#include <sstream>

#include "Contract.h"
#include "velmar/crypto/BaseEncoding.h"
#include "velmar/crypto/DigestUtils.h"
#include "velmar/crypto/RandomUtils.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/json/JSONUtils.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/ErrorType.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/TimeUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar::port {
namespace {

using crypto::BaseEncoding;
using json::JSONUtils;

std::vector<unsigned char> bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

// What `reader` gives for `key`: "true VALUE", or "false" and what it left in
// an output that held "stale" (-7 for integers).
std::string read(const std::string& reader, json_object* object, const std::string& key) {
    std::string text = "stale";
    long long wide = -7;
    int narrow = -7;
    json_object* member = nullptr;
    array_list* list = nullptr;
    bool ok = false;
    if (reader == "getString") ok = JSONUtils::getString(object, key, text);
    if (reader == "getInt") ok = JSONUtils::getInt(object, key, wide);
    if (reader == "getInt(int)") ok = JSONUtils::getInt(object, key, narrow);
    if (reader == "getJSONObject") ok = JSONUtils::getJSONObject(object, key, member);
    if (reader == "getJSONArray") ok = JSONUtils::getJSONArray(object, key, list);
    if (member != nullptr) text = json_object_to_json_string(member);
    if (list != nullptr) text = "length-" + std::to_string(array_list_length(list));
    if (reader.rfind("getInt", 0) == 0) text = std::to_string(reader == "getInt" ? wide : narrow);
    return (ok ? "true " : "false ") + text;
}

std::vector<Point> helpers() {
    return {
        {"JSONUtils: each reader takes its own type only and leaves the output alone otherwise; "
         "64-bit integers whole; getInt(int&) refuses what does not fit an int; a missing member "
         "or JSON null is refused",
         [](Port&, Verdict& v) {
             json::JSONObjectCleaner cleaner;
             json_object* root = cleaner.add(json_tokener_parse(
                 R"({"s":"text","i":5,"d":1.5,"b":true,"a":[1,2],"o":{"k":1},"n":null,)"
                 R"("max":9223372036854775807,"imin":-2147483648,"under":-2147483649})"));
             // READER KEY -> what it gives
             for (const std::string row :
                  {"getString s -> true text", "getString i -> false stale", "getInt i -> true 5",
                   "getInt s -> false -7", "getInt d -> false -7",
                   "getJSONArray a -> true length-2", "getJSONArray o -> false stale",
                   "getJSONObject o -> true { \"k\": 1 }", "getJSONObject i -> true 5",
                   "getInt max -> true 9223372036854775807", "getInt(int) max -> false -7",
                   "getInt(int) imin -> true -2147483648", "getInt(int) under -> false -7",
                   "getJSONObject n -> false stale", "getString none -> false stale",
                   "getJSONArray none -> false stale"}) {
                 const size_t space = row.find(' '), arrow = row.find(" -> ");
                 v.equal(row.substr(0, arrow),
                         read(row.substr(0, space), root, row.substr(space + 1, arrow - space - 1)),
                         row.substr(arrow + 4));
             }
             v.equal("getString of a null object", read("getString", nullptr, "s"), "false stale");
         }},
        {"DigestUtils::md5: RFC 1321 test vectors, one of them longer than a block",
         [](Port&, Verdict& v) {
             const char* const rows[][2] = {
                 {"", "d41d8cd98f00b204e9800998ecf8427e"},
                 {"abc", "900150983cd24fb0d6963f7d28e17f72"},
                 {"1234567890123456789012345678901234567890123456789012345678901234567890123456"
                  "7890",
                  "57edf4a22be3c955ac49da2e2107b67a"}};
             for (const auto& row : rows) {
                 std::vector<unsigned char> digest;
                 const bool ok = crypto::DigestUtils::md5(digest, row[0], strlen(row[0]));
                 v.equal(Verdict::show(row[0]), ok ? BaseEncoding::encodeHex(digest) : "", row[1]);
             }
             std::vector<unsigned char> digest;
             v.expect(!crypto::DigestUtils::md5(digest, nullptr, 3), "no data of length 3 refused");
         }},
        {"str_hmac_sha256: RFC 4231 test cases 1 and 6 (a key longer than a block), 32 bytes "
         "released by str_destroy",
         [](Port&, Verdict& v) {
             const std::string rows[][3] = {
                 {std::string(20, '\x0b'), "Hi There",
                  "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7"},
                 {std::string(131, '\xaa'),
                  "Test Using Larger Than Block-Size Key - Hash Key First",
                  "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54"}};
             for (const auto& [key, data, mac] : rows) {
                 str_t k{uint32_t(key.size()), (unsigned char*)key.data()};
                 str_t d{uint32_t(data.size()), (unsigned char*)data.data()};
                 str_t* out = str_hmac_sha256(&d, &k);
                 v.equal(data,
                         out ? BaseEncoding::encodeHex({out->data, out->data + out->len}) : "",
                         mac);
                 str_destroy(out);
             }
             str_t k{3, nullptr}, d{0, nullptr};
             v.expect(!str_hmac_sha256(nullptr, &d) && !str_hmac_sha256(&d, nullptr) &&
                          !str_hmac_sha256(&d, &k) && !str_hmac_sha256(&k, &d),
                      "no string, or no bytes of length 3: no MAC");
             str_destroy(nullptr);
             str_hexdump("contract", nullptr);  // the library passes a failed HMAC too
         }},
        {"BaseEncoding: Base64 of RFC 4648 (\"+\", \"/\", \"=\" padding), its URL-safe form "
         "(\"-\", \"_\", no padding) and lower-case hex, every overload",
         [](Port&, Verdict& v) {
             // clang-format off
             const char* const rows[][4] = {
                 {"", "", "", ""}, {"f", "Zg==", "Zg", "66"}, {"fo", "Zm8=", "Zm8", "666f"},
                 {"foo", "Zm9v", "Zm9v", "666f6f"}, {"foob", "Zm9vYg==", "Zm9vYg", "666f6f62"},
                 {"fooba", "Zm9vYmE=", "Zm9vYmE", "666f6f6261"},
                 {"foobar", "Zm9vYmFy", "Zm9vYmFy", "666f6f626172"},
                 {"\xfb\xff\xbf\x0a", "+/+/Cg==", "-_-_Cg", "fbffbf0a"}};
             // clang-format on
             for (const auto& row : rows) {
                 std::string out = "stale";
                 const bool ok = BaseEncoding::encodeB64(out, row[0], strlen(row[0]));
                 const std::string got = (ok ? out : "false") + " " +
                                         BaseEncoding::encodeB64(bytes(row[0])) + " " +
                                         BaseEncoding::encodeB64URL(row[0], strlen(row[0])) + " " +
                                         BaseEncoding::encodeB64URL(bytes(row[0])) + " " +
                                         BaseEncoding::encodeHex(bytes(row[0]));
                 v.equal(Verdict::show(row[0]), got,
                         std::string(row[1]) + " " + row[1] + " " + row[2] + " " + row[2] + " " +
                             row[3]);
             }
             std::string out = "stale";
             v.expect(!BaseEncoding::encodeB64(out, nullptr, 3) && out == "stale" &&
                          BaseEncoding::encodeB64URL(nullptr, 3).empty(),
                      "no data of length 3: refused, nothing encoded");
         }},
        {"RandomUtils::nextBytes: as many bytes as asked, two draws differ; UUIDUtils::generate: "
         "36 lower-case characters of a version-4 UUID, 1000 in a row distinct",
         [](Port&, Verdict& v) {
             const auto a = crypto::RandomUtils::nextBytes(32),
                        b = crypto::RandomUtils::nextBytes(32);
             v.expect(a.size() == 32 && a != b && crypto::RandomUtils::nextBytes(0).empty(),
                      "32 bytes, then 32 others; none for 0");
             const std::regex form(
                 "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
             std::set<std::string> seen;
             for (int i = 0; i < 1000; ++i) {
                 const std::string uuid = utils::UUIDUtils::generate();
                 if (!std::regex_match(uuid, form)) v.expect(false, "form (got " + uuid + ")");
                 seen.insert(uuid);
             }
             v.equal("distinct UUIDs", seen.size(), 1000u);
         }},
        {"TimeUtils::currentTimeMillis: milliseconds since the epoch, as the system clock has it",
         [](Port& port, Verdict& v) {
             port.require(Need::SystemClock);
             const long long system = std::time(nullptr) * 1000LL;  // to the second
             v.expect(std::llabs(utils::TimeUtils::currentTimeMillis() - system) < 2000,
                      "within 2 s");
         }},
    };
}

std::vector<Point> files() {
    return {
        {"ConfigFile: key=value lines; comments, blank lines and blanks around key and value "
         "skipped; the last of a repeated key; a missing file or key reads as \"\"",
         [](Port& port, Verdict& v) {
             port.require(Need::ConfigText);
             utils::ConfigFile config(port.configFile(
                 "# sTimeSyncURL=commented\n\n  sQuilAPIURL =  https://cloud.test/a?x=1#f  \r\n"
                 "\t# indented\nbroken line\n=novalue\nsTimeSyncURL=\n"
                 "sVeWiFiAPIURL=first\nsVeWiFiAPIURL=second\nsVeWiFiLOGURL=a=b"));
             std::string got =
                 utils::ConfigFile(port.configFile(std::nullopt)).get("sQuilAPIURL") + "|";
             for (const char* key : {"sQuilAPIURL", "sTimeSyncURL", "sVeWiFiAPIURL",
                                     "sVeWiFiLOGURL", "sQuilUserprofileURL", ""})
                 got += config.get(key) + "|";
             v.equal("values", got, "|https://cloud.test/a?x=1#f||second|a=b|||");
         }},
        {"ExecUtils::exec: the command's exit status and all it wrote to standard output; 127 "
         "and no output for a command that cannot be found",
         [](Port& port, Verdict& v) {
             port.require(Need::Commands);
             const char* const rows[][2] = {{"printf 'a\\nb'; exit 3", "3 a\nb"},
                                            {"echo 'exec: standard error, not captured' >&2", "0 "},
                                            {"velmar-no-such-tool 2>/dev/null", "127 "}};
             for (const auto& row : rows) {
                 std::string output = "stale";
                 const int status = utils::ExecUtils::exec(output, row[0]);
                 v.equal(Verdict::show(row[0]), std::to_string(status) + " " + output, row[1]);
             }
         }},
        {"ErrorCode: every status has a message of its own, and prints as "
         "\"Error (code: N, message: TEXT)\"",
         [](Port&, Verdict& v) {
             std::set<std::string> messages;
             // Every status, and one no release has used.
             for (int code : {0, 101, 600, 601, 602, 603, 604, 605, 606, 607, 610, 612, 1001, 1002,
                              1003, 9999})
                 messages.insert(utils::ErrorCode::getErrorMessage(utils::ErrorType(code)));
             v.equal("distinct messages", messages.size(), 16u);
             std::ostringstream out;
             out << utils::ERROR_HTTP_FAILED;
             v.equal("stream form", out.str(),
                     "Error (code: 604, message: " +
                         utils::ErrorCode::getErrorMessage(utils::ERROR_HTTP_FAILED) + ")");
         }},
        {"str_hexdump: silent unless VELMAR_HEXDUMP=1, and even then never the whole signature",
         [](Port&, Verdict& v) {
             unsigned char digest[32];
             std::memset(digest, 0xab, sizeof(digest));
             const str_t mac{32, digest};
             for (const char* on : {"0", "1"}) {
                 setenv("VELMAR_HEXDUMP", on, 1);
                 ::testing::internal::CaptureStderr();
                 str_hexdump("hmac", &mac);
                 str_hexdump(nullptr, nullptr);
                 const std::string dump = ::testing::internal::GetCapturedStderr();
                 v.expect(dump.empty() == (on[0] == '0'), std::string("output with ") + on);
                 v.expect(dump.find("ab ab ab ab ab") == std::string::npos,
                          "at most four bytes shown (got " + Verdict::show(dump) + ")");
             }
             unsetenv("VELMAR_HEXDUMP");
         }},
    };
}

INSTANTIATE_TEST_SUITE_P(Helpers, Contract, ::testing::ValuesIn(joined({helpers(), files()})),
                         testName);

}  // namespace
}  // namespace velmar::port
