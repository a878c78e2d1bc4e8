// Heap allocations of one signed presence call (PresenceAPI::getPresence),
// after warm-up, beside the bare libcurl request that sends the same bytes on
// a reused handle, over HTTP and HTTPS. libcurl, OpenSSL, json-c and glibc
// allocate with malloc, so malloc and its kin are interposed here (operator
// new goes through them too); only the calling thread is counted, not the
// server's. Prints `key=value` lines for the summary:
//   alloc.<library|bare>.<http|https>.count / .bytes   per call
#include <curl/curl.h>
#include <stdlib.h>

#include <cerrno>
#include <cstdio>
#include <new>
#include <string>

#include "BareRequest.h"
#include "LoopbackServer.h"
#include "Sandbox.h"
#include "velmar/quil/api/PresenceAPI.h"

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* pointer, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* pointer);
}

namespace {

// Thread-local, so that the server threads' allocations stay out, and plain
// types, so that reaching them allocates nothing.
thread_local bool tCounting = false;
thread_local long long tCount = 0;
thread_local long long tBytes = 0;

inline void note(size_t size) {
    if (!tCounting) return;
    ++tCount;
    tBytes += static_cast<long long>(size);
}

}  // namespace

extern "C" {

void* malloc(size_t size) {
    note(size);
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size) {
    note(count * size);
    return __libc_calloc(count, size);
}

void* realloc(void* pointer, size_t size) {
    note(size);
    return __libc_realloc(pointer, size);
}

void free(void* pointer) {
    __libc_free(pointer);
}

void* memalign(size_t alignment, size_t size) {
    note(size);
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size) {
    note(size);
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** out, size_t alignment, size_t size) {
    note(size);
    void* pointer = __libc_memalign(alignment, size);
    if (pointer == nullptr) return ENOMEM;
    *out = pointer;
    return 0;
}

}  // extern "C"

// The global operators through the counted malloc, so that C++ allocations
// count whichever way the standard library was linked.
void* operator new(size_t size) {
    void* pointer = malloc(size == 0 ? 1 : size);
    if (pointer == nullptr) throw std::bad_alloc();
    return pointer;
}
void* operator new[](size_t size) {
    return operator new(size);
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
    return malloc(size == 0 ? 1 : size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
    return malloc(size == 0 ? 1 : size);
}
void operator delete(void* pointer) noexcept {
    free(pointer);
}
void operator delete[](void* pointer) noexcept {
    free(pointer);
}
void operator delete(void* pointer, size_t) noexcept {
    free(pointer);
}
void operator delete[](void* pointer, size_t) noexcept {
    free(pointer);
}

namespace {

constexpr int kWarmUp = 20;  // connection, TLS session, caches settled
constexpr int kCounted = 200;

struct PerCall {
    double count = 0;
    double bytes = 0;
};

// `call` kWarmUp times, then kCounted times counted; false if a call fails.
template <typename Call>
bool measure(Call call, PerCall& out) {
    for (int i = 0; i < kWarmUp; ++i)
        if (!call()) return false;
    tCount = 0;
    tBytes = 0;
    tCounting = true;
    bool ok = true;
    for (int i = 0; i < kCounted && ok; ++i)
        ok = call();
    tCounting = false;
    out.count = static_cast<double>(tCount) / kCounted;
    out.bytes = static_cast<double>(tBytes) / kCounted;
    return ok;
}

void print(const char* side, const char* scheme, const PerCall& figure) {
    std::printf("alloc.%s.%s.count=%.1f\nalloc.%s.%s.bytes=%.0f\n", side, scheme, figure.count,
                side, scheme, figure.bytes);
}

}  // namespace

int main() {
    bench::Sandbox device;
    bench::CertificateFiles certificate;
    std::string error;
    if (!quilcloud::makeCertificates(device.path(""), {}, 0, certificate, error)) {
        std::fprintf(stderr, "bench_allocations: %s\n", error.c_str());
        return 1;
    }
    const char* body = "{\"code\":0,\"message\":\"ok\",\"data\":{\"online\":true}}";
    bench::LoopbackServer http(nullptr, body);
    bench::LoopbackServer https(&certificate, body);
    for (bench::LoopbackServer* server : {&http, &https}) {
        if (!server->start()) {
            std::fprintf(stderr, "bench_allocations: %s\n", server->error().c_str());
            return 1;
        }
    }
    setenv("VELMAR_ROOT", device.root().c_str(), 1);
    setenv("VELMAR_CA_FILE", certificate.caFile.c_str(), 1);
    bench::Sandbox::settle();

    for (const bool tls : {false, true}) {
        const std::string base = (tls ? https : http).baseUrl();
        const std::string caFile = tls ? certificate.caFile : std::string();
        const char* scheme = tls ? "https" : "http";
        PerCall library, bare;
        const bool libraryOk = measure(
            [&] {
                std::string response;
                return velmar::quil::api::PresenceAPI::getPresence(response, base) == 0;
            },
            library);
        CURL* curl = curl_easy_init();
        const bool bareOk = measure([&] { return bench::bareGet(curl, base, caFile); }, bare);
        curl_easy_cleanup(curl);
        if (!libraryOk || !bareOk) {
            std::fprintf(stderr, "bench_allocations: the %s %s request failed\n", scheme,
                         libraryOk ? "bare" : "signed");
            return 1;
        }
        print("library", scheme, library);
        print("bare", scheme, bare);
    }
    return 0;
}
