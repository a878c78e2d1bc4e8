// Known-answer tests of the helpers both ports share.
#include <json-c/json.h>

#include <cstring>

#include "velmar/crypto/BaseEncoding.h"
#include "velmar/device/DeviceInfo.h"
#include "velmar/fake/FakeTest.h"
#include "velmar/http/HTTPRequest.h"
#include "velmar/json/JSONUtils.h"

using namespace velmar;

namespace {

std::vector<unsigned char> bytes(const std::string& s) {
    return {s.begin(), s.end()};
}

std::string hmacHex(const std::string& key, const std::string& data) {
    str_t k{static_cast<uint32_t>(key.size()), (unsigned char*)key.data()};
    str_t d{static_cast<uint32_t>(data.size()), (unsigned char*)data.data()};
    str_t* mac = str_hmac_sha256(&d, &k);
    std::string hex = crypto::BaseEncoding::encodeHex({mac->data, mac->data + mac->len});
    str_destroy(mac);
    return hex;
}

class PlatformCommonTest : public fake::FakeTest {};

TEST_F(PlatformCommonTest, HmacSha256MatchesRfc4231) {
    EXPECT_EQ(hmacHex(std::string(20, '\x0b'), "Hi There"),
              "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7");
    EXPECT_EQ(hmacHex("Jefe", "what do ya want for nothing?"),
              "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843");
    EXPECT_EQ(
        hmacHex(std::string(131, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First"),
        "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54");
    EXPECT_EQ(fake::liveByteStrings(), 0);
}

TEST_F(PlatformCommonTest, Base64MatchesRfc4648AndUrlSafeDropsPadding) {
    const char* plain[] = {"", "f", "fo", "foo", "foob", "fooba", "foobar"};
    const char* coded[] = {"", "Zg==", "Zm8=", "Zm9v", "Zm9vYg==", "Zm9vYmE=", "Zm9vYmFy"};
    for (int i = 0; i < 7; ++i) {
        std::string out;
        EXPECT_TRUE(crypto::BaseEncoding::encodeB64(out, plain[i], std::strlen(plain[i])));
        EXPECT_EQ(out, coded[i]);
        EXPECT_EQ(crypto::BaseEncoding::encodeB64(bytes(plain[i])), coded[i]);
    }
    const std::vector<unsigned char> high{0xfb, 0xff, 0xbf};
    EXPECT_EQ(crypto::BaseEncoding::encodeB64(high), "+/+/");
    EXPECT_EQ(crypto::BaseEncoding::encodeB64URL(high), "-_-_");
    EXPECT_EQ(crypto::BaseEncoding::encodeB64URL(bytes("f")), "Zg");
}

TEST_F(PlatformCommonTest, WireFormEncodesAsTheServicesExpect) {
    EXPECT_EQ(
        http::HTTPRequest::encodeHTTPParams({{"b", "a b&c=d"}, {"a", "-._~"}, {"u", "\xc3\xa9"}}),
        "a=-._~&b=a%20b%26c%3Dd&u=%C3%A9");
    EXPECT_EQ(http::HTTPRequest::encodeHTTPParams({}), "");
    EXPECT_EQ(http::HTTPRequest::buildCookieHeader({{"z", "1"}, {"a", "x y"}}),
              "Cookie: a=x y; z=1");
}

TEST_F(PlatformCommonTest, JsonReadersRefuseMissingNullAndWrongTypes) {
    json::JSONObjectCleaner cleaner;
    json_object* root = cleaner.add(json_tokener_parse(
        R"({"s":"text","i":5,"big":4294967296,"d":1.5,"n":null,"a":[1],"o":{}})"));
    ASSERT_NE(root, nullptr);
    std::string s = "kept";
    long long wide = -7;
    int narrow = -7;
    EXPECT_TRUE(json::JSONUtils::getString(root, "s", s));
    EXPECT_EQ(s, "text");
    EXPECT_FALSE(json::JSONUtils::getString(root, "i", s));
    EXPECT_TRUE(json::JSONUtils::getInt(root, "big", wide));
    EXPECT_EQ(wide, 4294967296LL);
    EXPECT_FALSE(json::JSONUtils::getInt(root, "big", narrow));
    EXPECT_FALSE(json::JSONUtils::getInt(root, "d", wide));
    EXPECT_FALSE(json::JSONUtils::getInt(root, "s", wide));
    json_object* value = nullptr;
    EXPECT_FALSE(json::JSONUtils::getJSONObject(root, "n", value));
    EXPECT_FALSE(json::JSONUtils::getJSONObject(root, "missing", value));
    EXPECT_TRUE(json::JSONUtils::getJSONObject(root, "a", value));
    array_list* list = nullptr;
    EXPECT_TRUE(json::JSONUtils::getJSONArray(root, "a", list));
    EXPECT_FALSE(json::JSONUtils::getJSONArray(root, "o", list));
    EXPECT_FALSE(json::JSONUtils::getString(nullptr, "s", s));

    // An element shared into a built array carries its own reference and is
    // released exactly once with both owners.
    json_object* built = cleaner.add(json_object_new_array());
    json_object_array_add(built, json_object_get(json_object_array_get_idx(value, 0)));
    EXPECT_EQ(cleaner.add(nullptr), nullptr);
}

}  // namespace
