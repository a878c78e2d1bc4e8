// The helpers: JSON readers, digests and encodings against published test
// vectors, random bytes, UUIDs, the clock, the configuration file, commands
// and whole-file replacement.
#include <json-c/json.h>

#include <array>
#include <chrono>
#include <cstring>
#include <regex>
#include <set>

#include "Contract.h"
#include "velmar/crypto/BaseEncoding.h"
#include "velmar/crypto/DigestUtils.h"
#include "velmar/crypto/RandomUtils.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/json/JSONUtils.h"
#include "velmar/utils/ConfigFile.h"
#include "velmar/utils/ExecUtils.h"
#include "velmar/utils/FileUtils.h"
#include "velmar/utils/TimeUtils.h"
#include "velmar/utils/UUIDUtils.h"

namespace velmar {
namespace port {
namespace {

using crypto::BaseEncoding;
using json::JSONUtils;

std::vector<unsigned char> bytes(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string hmacHex(const std::string& key, const std::string& data) {
    str_t k{static_cast<uint32_t>(key.size()), (unsigned char*)key.data()};
    str_t d{static_cast<uint32_t>(data.size()), (unsigned char*)data.data()};
    str_t* mac = str_hmac_sha256(&d, &k);
    if (mac == nullptr) return "NULL";
    const std::string hex = BaseEncoding::encodeHex({mac->data, mac->data + mac->len});
    str_destroy(mac);
    return hex;
}

// What each reader gives for `key` of `object`: "true value" or "false" with
// the stale value it must leave alone.
std::string read(const std::string& reader, json_object* object, const std::string& key) {
    std::string text = "stale";
    long long wide = -7;
    int narrow = -7;
    json_object* member = nullptr;
    array_list* list = nullptr;
    bool ok = false;
    if (reader == "getString") ok = JSONUtils::getString(object, key, text);
    if (reader == "getInt(long long)") ok = JSONUtils::getInt(object, key, wide);
    if (reader == "getInt(int)") ok = JSONUtils::getInt(object, key, narrow);
    if (reader == "getJSONObject") ok = JSONUtils::getJSONObject(object, key, member);
    if (reader == "getJSONArray") ok = JSONUtils::getJSONArray(object, key, list);
    if (member != nullptr) text = json_object_to_json_string(member);
    if (list != nullptr) text = "length " + std::to_string(array_list_length(list));
    if (reader == "getInt(int)") text = std::to_string(narrow);
    if (reader == "getInt(long long)") text = std::to_string(wide);
    return (ok ? "true " : "false ") + text;
}

// Rows of reader, key and what it gives, against one document.
Point jsonPoint(const std::string& name, const char* document,
                std::vector<std::array<const char*, 3>> rows) {
    return {name, [document, rows](Port&, Verdict& v) {
                json::JSONObjectCleaner cleaner;
                json_object* root = cleaner.add(json_tokener_parse(document));
                for (const auto& row : rows)
                    v.equal(std::string(row[0]) + " " + row[1], read(row[0], root, row[1]), row[2]);
                v.equal("getString on a null object", read("getString", nullptr, "s"),
                        "false stale");
            }};
}

std::vector<Point> json() {
    return {
        jsonPoint("JSONUtils: each reader takes its own type only, and leaves the output alone "
                  "otherwise",
                  R"({"s":"text","i":5,"d":1.5,"b":true,"a":[1,2],"o":{"k":1}})",
                  {{"getString", "s", "true text"},
                   {"getString", "i", "false stale"},
                   {"getString", "o", "false stale"},
                   {"getInt(long long)", "i", "true 5"},
                   {"getInt(long long)", "s", "false -7"},
                   {"getInt(long long)", "d", "false -7"},
                   {"getInt(long long)", "b", "false -7"},
                   {"getJSONArray", "a", "true length 2"},
                   {"getJSONArray", "o", "false stale"},
                   {"getJSONObject", "o", "true { \"k\": 1 }"},
                   {"getJSONObject", "i", "true 5"}}),
        jsonPoint("JSONUtils: 64-bit integers are read whole; getInt(int&) refuses what does not "
                  "fit an int",
                  R"({"max":9223372036854775807,"min":-9223372036854775808,"big":4294967296,)"
                  R"("imin":-2147483648})",
                  {{"getInt(long long)", "max", "true 9223372036854775807"},
                   {"getInt(long long)", "min", "true -9223372036854775808"},
                   {"getInt(long long)", "big", "true 4294967296"},
                   {"getInt(int)", "big", "false -7"},
                   {"getInt(int)", "imin", "true -2147483648"}}),
        jsonPoint("JSONUtils: a missing member or JSON null is refused, the output left alone",
                  R"({"n":null})",
                  {{"getJSONObject", "missing", "false stale"},
                   {"getJSONObject", "n", "false stale"},
                   {"getString", "n", "false stale"},
                   {"getInt(long long)", "missing", "false -7"}}),
    };
}

std::vector<Point> crypto() {
    return {
        {"DigestUtils::md5: the RFC 1321 test suite",
         [](Port&, Verdict& v) {
             const char* const rows[][2] = {
                 {"", "d41d8cd98f00b204e9800998ecf8427e"},
                 {"a", "0cc175b9c0f1b6a831c399e269772661"},
                 {"abc", "900150983cd24fb0d6963f7d28e17f72"},
                 {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
                 {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
                 {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
                  "d174ab98d277d9f5a5611c2c9f419d9f"},
                 {"1234567890123456789012345678901234567890123456789012345678901234567890123456"
                  "7890",
                  "57edf4a22be3c955ac49da2e2107b67a"}};
             for (const auto& row : rows) {
                 std::vector<unsigned char> digest;
                 const bool ok = crypto::DigestUtils::md5(digest, row[0],
                                                          static_cast<unsigned>(strlen(row[0])));
                 v.equal(Verdict::show(row[0]), ok ? BaseEncoding::encodeHex(digest) : "false",
                         row[1]);
             }
         }},
        {"str_hmac_sha256: RFC 4231 test cases 1, 2 and 6, 32 bytes released by str_destroy",
         [](Port&, Verdict& v) {
             v.equal("case 1", hmacHex(std::string(20, '\x0b'), "Hi There"),
                     "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
             v.equal("case 2", hmacHex("Jefe", "what do ya want for nothing?"),
                     "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
             v.equal("case 6",
                     hmacHex(std::string(131, '\xaa'),
                             "Test Using Larger Than Block-Size Key - Hash Key First"),
                     "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
         }},
        {"BaseEncoding: Base64 of RFC 4648 (\"+\", \"/\", \"=\" padding), its URL-safe form "
         "(\"-\", \"_\", no padding) and lower-case hex, every overload",
         [](Port&, Verdict& v) {
             const char* const rows[][4] = {{"", "", "", ""},
                                            {"f", "Zg==", "Zg", "66"},
                                            {"fo", "Zm8=", "Zm8", "666f"},
                                            {"foo", "Zm9v", "Zm9v", "666f6f"},
                                            {"foob", "Zm9vYg==", "Zm9vYg", "666f6f62"},
                                            {"fooba", "Zm9vYmE=", "Zm9vYmE", "666f6f6261"},
                                            {"foobar", "Zm9vYmFy", "Zm9vYmFy", "666f6f626172"},
                                            {"\xfb\xff\xbf\x0a", "+/+/Cg==", "-_-_Cg", "fbffbf0a"}};
             for (const auto& row : rows) {
                 std::string out = "stale";
                 const std::string in = Verdict::show(row[0]);
                 const bool ok = BaseEncoding::encodeB64(out, row[0], strlen(row[0]));
                 v.equal("Base64 of " + in, ok ? out : "false", row[1]);
                 v.equal("Base64 (vector) of " + in, BaseEncoding::encodeB64(bytes(row[0])),
                         row[1]);
                 v.equal("URL-safe of " + in, BaseEncoding::encodeB64URL(row[0], strlen(row[0])),
                         row[2]);
                 v.equal("URL-safe (vector) of " + in, BaseEncoding::encodeB64URL(bytes(row[0])),
                         row[2]);
                 v.equal("hex of " + in, BaseEncoding::encodeHex(bytes(row[0])), row[3]);
             }
         }},
    };
}

std::vector<Point> sources() {
    return {
        {"RandomUtils::nextBytes: as many bytes as asked, two draws differ",
         [](Port&, Verdict& v) {
             v.equal("0 bytes", crypto::RandomUtils::nextBytes(0).size(), 0u);
             const auto a = crypto::RandomUtils::nextBytes(32);
             const auto b = crypto::RandomUtils::nextBytes(32);
             v.equal("32 bytes", a.size(), 32u);
             v.expect(a != b, "two draws of 32 bytes differ");
         }},
        {"UUIDUtils::generate: 36 lower-case characters of a version-4 UUID, 1000 in a row "
         "distinct",
         [](Port&, Verdict& v) {
             const std::regex form(
                 "[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
             std::set<std::string> seen;
             for (int i = 0; i < 1000; ++i) {
                 const std::string uuid = utils::UUIDUtils::generate();
                 if (!std::regex_match(uuid, form)) v.expect(false, "form (got " + uuid + ")");
                 seen.insert(uuid);
             }
             v.equal("distinct", seen.size(), 1000u);
         }},
        {"TimeUtils::currentTimeMillis: milliseconds since the epoch, not seconds",
         [](Port&, Verdict& v) {
             const long long now = utils::TimeUtils::currentTimeMillis();
             v.expect(now > 1000000000000LL,
                      "after 2001-09-09 in milliseconds (got " + std::to_string(now) + ")");
         }},
        {"TimeUtils::currentTimeMillis: follows the system clock",
         [](Port& port, Verdict& v) {
             require(port, Need::SystemClock);
             const long long system = std::chrono::duration_cast<std::chrono::milliseconds>(
                                          std::chrono::system_clock::now().time_since_epoch())
                                          .count();
             v.expect(std::llabs(utils::TimeUtils::currentTimeMillis() - system) < 2000,
                      "within 2 s of the system clock");
         }},
    };
}

std::vector<Point> files() {
    return {
        {"ConfigFile: a missing file reads every key as \"\"",
         [](Port& port, Verdict& v) {
             utils::ConfigFile config(port.configFile(std::nullopt));
             v.equal("sQuilAPIURL", config.get(utils::ConfigFile::sQuilAPIURL), "");
         }},
        {"ConfigFile: key=value lines; comments, blank lines and blanks around key and value "
         "skipped; the last of a repeated key",
         [](Port& port, Verdict& v) {
             require(port, Need::ConfigText);
             utils::ConfigFile config(port.configFile(
                 "# sTimeSyncURL=commented\n\n  sQuilAPIURL =  https://cloud.test/a?x=1#f  \r\n"
                 "\t# indented\nbroken line\n=novalue\nsTimeSyncURL=\n"
                 "sVeWiFiAPIURL=first\nsVeWiFiAPIURL=second\nsVeWiFiLOGURL=a=b"));
             using C = utils::ConfigFile;
             const std::string got =
                 config.get(C::sQuilAPIURL) + "|" + config.get(C::sTimeSyncURL) + "|" +
                 config.get(C::sVeWiFiAPIURL) + "|" + config.get(C::sVeWiFiLOGURL) + "|" +
                 config.get(C::sQuilUserprofileURL) + "|" + config.get("");
             v.equal("values", got, "https://cloud.test/a?x=1#f||second|a=b||");
         }},
        {"ExecUtils::exec: the command's exit status, and all it wrote to standard output",
         [](Port& port, Verdict& v) {
             require(port, Need::Commands);
             const char* const rows[][3] = {
                 {"printf 'a\\nb'; exit 3", "3", "a\nb"},
                 {"echo '{\"level\":1}'", "0", "{\"level\":1}\n"},
                 {"echo 'exec: standard error, not captured' >&2", "0", ""}};
             for (const auto& row : rows) {
                 std::string output = "stale";
                 const int status = utils::ExecUtils::exec(output, row[0]);
                 v.equal(Verdict::show(row[0]), std::to_string(status) + " " + output,
                         std::string(row[1]) + " " + row[2]);
             }
             std::string output;
             utils::ExecUtils::exec(output, "head -c 300000 /dev/zero | tr '\\0' a");
             v.equal("size of a 300000-byte output", output.size(), 300000u);
         }},
        {"ExecUtils::exec: a command that cannot be found is 127, with no output",
         [](Port&, Verdict& v) {
             std::string output = "stale";
             const int status = utils::ExecUtils::exec(output, "velmar-no-such-tool 2>/dev/null");
             v.equal("status and output", std::to_string(status) + " " + output, "127 ");
         }},
        {"FileUtils::writeAtomically: the file then holds exactly the new text",
         [](Port& port, Verdict& v) {
             const std::string path = port.deviceFile("an older, longer text");
             v.expect(utils::FileUtils::writeAtomically(path, "{\"a\":1}"), "true");
             char buf[128] = {};
             const int length = file_read_string(path.c_str(), buf, sizeof(buf));
             v.equal("read back", std::to_string(length) + " " + buf, "7 {\"a\":1}");
         }},
    };
}

INSTANTIATE_TEST_SUITE_P(Helpers, Contract,
                         ::testing::ValuesIn(joined({json(), crypto(), sources(), files()})),
                         testName);

}  // namespace
}  // namespace port
}  // namespace velmar
