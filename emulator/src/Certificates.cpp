#include "Certificates.h"

#include <fcntl.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <memory>

namespace quilcloud {

namespace {

template <typename T, void (*Free)(T*)>
struct Deleter {
    void operator()(T* p) const { Free(p); }
};
using KeyPtr = std::unique_ptr<EVP_PKEY, Deleter<EVP_PKEY, EVP_PKEY_free>>;
using CertPtr = std::unique_ptr<X509, Deleter<X509, X509_free>>;
using BignumPtr = std::unique_ptr<BIGNUM, Deleter<BIGNUM, BN_free>>;
using NamesPtr = std::unique_ptr<GENERAL_NAMES, Deleter<GENERAL_NAMES, GENERAL_NAMES_free>>;

std::string opensslError(const std::string& what) {
    std::string text = what;
    unsigned long code = ERR_get_error();
    if (code != 0) {
        char buffer[256];
        ERR_error_string_n(code, buffer, sizeof(buffer));
        text += ": ";
        text += buffer;
    }
    ERR_clear_error();
    return text;
}

KeyPtr newKey() {
    return KeyPtr(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"));
}

bool addExtension(X509* cert, X509* issuer, int nid, const char* value) {
    X509V3_CTX ctx;
    X509V3_set_ctx_nodb(&ctx);
    X509V3_set_ctx(&ctx, issuer, cert, nullptr, nullptr, 0);
    X509_EXTENSION* ext = X509V3_EXT_conf_nid(nullptr, &ctx, nid, value);
    if (!ext) return false;
    bool ok = X509_add_ext(cert, ext, -1) == 1;
    X509_EXTENSION_free(ext);
    return ok;
}

bool addName(GENERAL_NAMES* names, const std::string& name) {
    GENERAL_NAME* entry = nullptr;
    if (ASN1_OCTET_STRING* ip = a2i_IPADDRESS(name.c_str())) {
        entry = GENERAL_NAME_new();
        if (!entry) {
            ASN1_OCTET_STRING_free(ip);
            return false;
        }
        GENERAL_NAME_set0_value(entry, GEN_IPADD, ip);
    } else {
        ERR_clear_error();
        ASN1_IA5STRING* dns = ASN1_IA5STRING_new();
        if (!dns || ASN1_STRING_set(dns, name.data(), static_cast<int>(name.size())) != 1 ||
            !(entry = GENERAL_NAME_new())) {
            ASN1_IA5STRING_free(dns);
            return false;
        }
        GENERAL_NAME_set0_value(entry, GEN_DNS, dns);
    }
    if (sk_GENERAL_NAME_push(names, entry) <= 0) {
        GENERAL_NAME_free(entry);
        return false;
    }
    return true;
}

// A certificate for `key` named `commonName`, valid from an hour ago (or from
// `notBeforeOffset` seconds from now) for `days`, its issuer taken from
// `issuer` (itself when null).
CertPtr newCertificate(EVP_PKEY* key, const char* commonName, X509* issuer, int days,
                       long long notBeforeOffset = 0) {
    // Days and seconds apart, as OpenSSL takes them: a long may be 32 bits.
    const long long from = notBeforeOffset != 0 ? notBeforeOffset : -3600;
    const int fromDays = static_cast<int>(from / 86400);
    const long fromSeconds = static_cast<long>(from % 86400);
    CertPtr cert(X509_new());
    BignumPtr serial(BN_new());
    if (!cert || !serial || X509_set_version(cert.get(), 2) != 1 ||
        BN_rand(serial.get(), 127, BN_RAND_TOP_ANY, BN_RAND_BOTTOM_ANY) != 1 ||
        !BN_to_ASN1_INTEGER(serial.get(), X509_get_serialNumber(cert.get())) ||
        !X509_time_adj_ex(X509_getm_notBefore(cert.get()), fromDays, fromSeconds, nullptr) ||
        !X509_time_adj_ex(X509_getm_notAfter(cert.get()), fromDays + days, fromSeconds, nullptr) ||
        X509_set_pubkey(cert.get(), key) != 1) {
        return nullptr;
    }
    X509_NAME* subject = X509_get_subject_name(cert.get());
    auto text = [](const char* s) { return reinterpret_cast<const unsigned char*>(s); };
    if (X509_NAME_add_entry_by_txt(subject, "O", MBSTRING_ASC, text("quil-cloud"), -1, -1, 0) !=
            1 ||
        X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC, text(commonName), -1, -1, 0) != 1 ||
        X509_set_issuer_name(cert.get(), X509_get_subject_name(issuer ? issuer : cert.get())) !=
            1) {
        return nullptr;
    }
    return cert;
}

bool writePem(const std::string& path, mode_t mode, X509* cert, EVP_PKEY* key) {
    int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    // A file left by an earlier run keeps its mode through O_TRUNC.
    if (fd < 0 || fchmod(fd, mode) != 0) {
        if (fd >= 0) ::close(fd);
        return false;
    }
    FILE* out = fdopen(fd, "w");
    if (!out) {
        ::close(fd);
        return false;
    }
    bool ok = cert ? PEM_write_X509(out, cert) == 1
                   : PEM_write_PrivateKey(out, key, nullptr, nullptr, 0, nullptr, nullptr) == 1;
    return std::fclose(out) == 0 && ok;
}

}  // namespace

bool makeCertificates(const std::string& dir, const std::vector<std::string>& extraNames,
                      long long notBeforeOffsetSeconds, CertificateFiles& files,
                      std::string& error) {
    KeyPtr caKey = newKey();
    KeyPtr serverKey = newKey();
    if (!caKey || !serverKey) {
        error = opensslError("cannot make a key");
        return false;
    }

    CertPtr ca = newCertificate(caKey.get(), "quil-cloud test CA", nullptr, 365);
    if (!ca || !addExtension(ca.get(), ca.get(), NID_basic_constraints, "critical,CA:TRUE") ||
        !addExtension(ca.get(), ca.get(), NID_key_usage, "critical,keyCertSign,cRLSign") ||
        !addExtension(ca.get(), ca.get(), NID_subject_key_identifier, "hash") ||
        !addExtension(ca.get(), ca.get(), NID_authority_key_identifier, "keyid:always") ||
        X509_sign(ca.get(), caKey.get(), EVP_sha256()) <= 0) {
        error = opensslError("cannot make the CA certificate");
        return false;
    }

    NamesPtr names(sk_GENERAL_NAME_new_null());
    bool namesOk = names != nullptr;
    for (const char* fixed : {"localhost", "127.0.0.1", "::1"})
        namesOk = namesOk && addName(names.get(), fixed);
    for (const auto& name : extraNames)
        namesOk = namesOk && !name.empty() && addName(names.get(), name);
    if (!namesOk) {
        error = opensslError("cannot make the certificate's names");
        return false;
    }

    CertPtr server =
        newCertificate(serverKey.get(), "localhost", ca.get(), 30, notBeforeOffsetSeconds);
    if (!server ||
        !addExtension(server.get(), ca.get(), NID_basic_constraints, "critical,CA:FALSE") ||
        !addExtension(server.get(), ca.get(), NID_key_usage, "critical,digitalSignature") ||
        !addExtension(server.get(), ca.get(), NID_ext_key_usage, "serverAuth") ||
        !addExtension(server.get(), ca.get(), NID_subject_key_identifier, "hash") ||
        !addExtension(server.get(), ca.get(), NID_authority_key_identifier, "keyid") ||
        X509_add1_ext_i2d(server.get(), NID_subject_alt_name, names.get(), 0, X509V3_ADD_DEFAULT) !=
            1 ||
        X509_sign(server.get(), caKey.get(), EVP_sha256()) <= 0) {
        error = opensslError("cannot make the server certificate");
        return false;
    }

    files.caFile = dir + "/ca.pem";
    files.certFile = dir + "/server.pem";
    files.keyFile = dir + "/server.key";
    if (!writePem(files.caFile, 0644, ca.get(), nullptr) ||
        !writePem(files.certFile, 0644, server.get(), nullptr) ||
        !writePem(files.keyFile, 0600, nullptr, serverKey.get())) {
        error = "cannot write the certificates into " + dir;
        return false;
    }
    return true;
}

}  // namespace quilcloud
