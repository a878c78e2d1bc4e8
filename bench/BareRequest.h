// The bare libcurl request the signed one is measured against: the same
// path, a query of the same length and the same Cookie header as the
// library's request for the sandboxed device, so that both send the same
// bytes and the server's share of the work is alike on both sides.
#pragma once

#include <curl/curl.h>

#include <string>

namespace bench {

constexpr const char* kBarePath =
    "/device/presence/?requestId=00000000-0000-4000-8000-000000000001";
constexpr const char* kBareCookie =
    "Cookie: deviceId=7300123456; deviceToken=0a1b2c3d4e5f6a7b8c9d0e1f2a3b4c5d6e7f8a9b0c1=; "
    "deviceTokenV2=dt-7f3a9c0e4b2d4e6f8a1b3c5d7e9f0a2b; "
    "nonce=00000000-0000-4000-8000-000000000002; "
    "signatureV2=sg-0a2b4c6d8e0f1a3b5c7d9e1f3a5b7c9d; sn=4417/20260001; userId=1001";

inline size_t keepBody(char* data, size_t size, size_t count, void* body) {
    static_cast<std::string*>(body)->append(data, size * count);
    return size * count;
}

// The least a client sets for that GET: URL, body sink and, over HTTPS
// (`caFile` not empty), verification against the run's CA. True on a 200.
inline bool bareGet(CURL* curl, const std::string& baseUrl, const std::string& caFile) {
    const std::string url = baseUrl + kBarePath;
    std::string body;
    curl_slist* headers = curl_slist_append(nullptr, kBareCookie);
    curl_easy_setopt(curl, CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, keepBody);
    curl_easy_setopt(curl, CURLOPT_WRITEDATA, &body);
    if (!caFile.empty()) curl_easy_setopt(curl, CURLOPT_CAINFO, caFile.c_str());
    long status = 0;
    const bool ok = curl_easy_perform(curl) == CURLE_OK &&
                    curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &status) == CURLE_OK &&
                    status == 200;
    curl_easy_setopt(curl, CURLOPT_HTTPHEADER, nullptr);
    curl_slist_free_all(headers);
    return ok;
}

}  // namespace bench
