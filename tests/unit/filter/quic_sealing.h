#pragma once

#include "filter_samples.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/params.h>

#include <array>
#include <string>
#include <vector>

namespace orvanta::testing {

enum class QuicVersion { one, two };

/// The client's side of the first packets, made from the standards with OpenSSL's own key derivation.
class QuicSealing {
public:
    QuicSealing(QuicVersion version, Octets destination) : m_version(version), m_destination(std::move(destination))
    {
        static const std::string saltOne("\x38\x76\x2c\xf7\xf5\x59\x34\xb3\x4d\x17\x9a\xe6\xa4\xc8\x0c\xad\xcc\xbb\x7f\x0a", 20);
        static const std::string saltTwo("\x0d\xed\xe3\xde\xf7\x00\xa6\xdb\x81\x93\x81\xbe\x6e\x26\x9d\xcb\xf9\xbd\x2e\xd9", 20);
        const std::string initial
            = derive(EVP_KDF_HKDF_MODE_EXTRACT_ONLY, std::string(filter::asText(m_destination)), version == QuicVersion::one ? saltOne : saltTwo, 32);
        const std::string client = expand(initial, "client in", 32);
        const std::string prefix = version == QuicVersion::one ? "quic " : "quicv2 ";
        m_key = expand(client, prefix + "key", 16);
        m_iv = expand(client, prefix + "iv", 12);
        m_headerKey = expand(client, prefix + "hp", 16);
    }

    /// An Initial packet with the given frames, filled up to `size`.
    [[nodiscard]] Octets initial(std::uint8_t number, Octets frames, std::size_t size = 1200) const
    {
        Octets header;
        append(header, m_version == QuicVersion::one ? 0xc0U : 0xd0U, 1);
        append(header, m_version == QuicVersion::one ? 0x00000001U : 0x6b3343cfU, 4);
        append(header, counted(m_destination, 1));
        append(header, 0, 1); // source
        append(header, 0, 1); // token
        const std::size_t headerSize = header.size() + 2 + 1;
        if (frames.size() + headerSize + 16 < size)
            frames.resize(size - headerSize - 16);
        append(header, 0x4000U | (1 + frames.size() + 16), 2);
        append(header, number, 1);

        std::string nonce = m_iv;
        nonce.back() = static_cast<char>(nonce.back() ^ number);
        Octets body(frames.size() + 16);
        int written = 0;
        EVP_CIPHER_CTX* seal = EVP_CIPHER_CTX_new();
        EVP_EncryptInit_ex(seal, EVP_aes_128_gcm(), nullptr, bytes(m_key), bytes(nonce));
        EVP_EncryptUpdate(seal, nullptr, &written, bytes(header), static_cast<int>(header.size()));
        EVP_EncryptUpdate(seal, bytes(body), &written, bytes(frames), static_cast<int>(frames.size()));
        EVP_EncryptFinal_ex(seal, bytes(body) + frames.size(), &written);
        EVP_CIPHER_CTX_ctrl(seal, EVP_CTRL_GCM_GET_TAG, 16, bytes(body) + frames.size());
        EVP_CIPHER_CTX_free(seal);

        std::array<unsigned char, 32> mask {};
        EVP_CIPHER_CTX* hide = EVP_CIPHER_CTX_new();
        EVP_EncryptInit_ex(hide, EVP_aes_128_ecb(), nullptr, bytes(m_headerKey), nullptr);
        EVP_EncryptUpdate(hide, mask.data(), &written, bytes(body) + 3, 16);
        EVP_CIPHER_CTX_free(hide);
        header[0] ^= static_cast<std::byte>(mask[0] & 0x0f);
        header.back() ^= static_cast<std::byte>(mask[1]);
        append(header, body);
        return header;
    }

    static Octets cryptoFrame(std::uint64_t offset, filter::Bytes piece)
    {
        Octets frame;
        append(frame, 6, 1);
        append(frame, 0x8000'0000U | offset, 4);
        append(frame, 0x4000U | piece.size(), 2);
        append(frame, piece);
        return frame;
    }

private:
    static unsigned char* bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }
    static const unsigned char* bytes(const std::string& text) { return reinterpret_cast<const unsigned char*>(text.data()); }
    static unsigned char* bytes(Octets& some) { return reinterpret_cast<unsigned char*>(some.data()); }

    static std::string derive(int mode, std::string key, std::string saltOrInfo, std::size_t size)
    {
        std::string output(size, '\0');
        std::string digest = "SHA256";
        const bool isExtraction = mode == EVP_KDF_HKDF_MODE_EXTRACT_ONLY;
        EVP_KDF* kdf = EVP_KDF_fetch(nullptr, "HKDF", nullptr);
        EVP_KDF_CTX* context = EVP_KDF_CTX_new(kdf);
        const std::array<OSSL_PARAM, 5> parameters { OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest.data(), 0),
            OSSL_PARAM_construct_int(OSSL_KDF_PARAM_MODE, &mode), OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_KEY, key.data(), key.size()),
            OSSL_PARAM_construct_octet_string(isExtraction ? OSSL_KDF_PARAM_SALT : OSSL_KDF_PARAM_INFO, saltOrInfo.data(), saltOrInfo.size()),
            OSSL_PARAM_construct_end() };
        EVP_KDF_derive(context, bytes(output), output.size(), parameters.data());
        EVP_KDF_CTX_free(context);
        EVP_KDF_free(kdf);
        return output;
    }

    static std::string expand(const std::string& secret, const std::string& label, std::size_t size)
    {
        std::string info { '\0', static_cast<char>(size), static_cast<char>(label.size() + 6) };
        info += "tls13 " + label + '\0';
        return derive(EVP_KDF_HKDF_MODE_EXPAND_ONLY, secret, info, size);
    }

    QuicVersion m_version;
    Octets m_destination;
    std::string m_key;
    std::string m_iv;
    std::string m_headerKey;
};

} // namespace orvanta::testing
