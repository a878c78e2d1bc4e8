// What the harnesses share: a device that can sign, and the check that turns
// a wrong result into a crash libFuzzer keeps the input of.
#pragma once

#include <rapidjson/document.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "velmar/fake/FakeTest.h"

namespace fuzz {

// A blank fake port with every value the calls under test read.
inline void freshDevice() {
    velmar::fake::reset();
    velmar::fake::giveIdentity();
    velmar::fake::setDeviceValue("uid", "1001");
    velmar::fake::setDeviceValue("iot_did", "did-7");
    velmar::fake::setDeviceValue("model", "speaker\x01\"hw\\");
    velmar::fake::setDeviceValue("version", "1.2.3");
    velmar::fake::setDeviceValue("sn", "sn-\xff");
    velmar::fake::setConfig("sTimeSyncURL", "https://time.test");
    velmar::fake::setConfig("sVeWiFiAPIURL", "https://upgrade.test");
}

// The cloud's answer on a fresh device: the fuzzer's bytes after the first
// are queued as `body`, the first picks one of `rows` (only ever appended to,
// so that the first byte of a seed keeps naming its call). Null for no bytes.
template <typename Row, size_t N>
const Row* answerRow(const Row (&rows)[N], const uint8_t* data, size_t size, std::string& body) {
    if (size == 0) return nullptr;
    freshDevice();
    body.assign(reinterpret_cast<const char*>(data) + 1, size - 1);
    velmar::fake::pushBody(body);
    return &rows[data[0] % N];
}

inline void require(bool ok, const char* what, const std::string& text) {
    if (ok) return;
    std::fprintf(stderr, "%s: %s\n", what, text.c_str());
    std::abort();
}

// `text` as JSON; false when RapidJSON refuses it.
inline bool parse(rapidjson::Document& document, const std::string& text) {
    document.Parse(text.data(), text.size());
    return !document.HasParseError();
}

}  // namespace fuzz
