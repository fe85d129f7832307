// AES over the EVP interface of libcrypto, with padding done here so that PKCS #7 and the
// chaining state follow our rules across calls.
#include <openssl/crypto.h>
#include <openssl/evp.h>

#include <climits>
#include <cstring>
#include <new>

#include "common/ZQCipher.h"

namespace ZQCommonNS {

struct ZQAesState {
  int status = 0;  // 0, or the failure of construction that every call returns
  int direction = AES_Base::DIR_ENCRYPT;
  EVP_CIPHER_CTX* ctx = nullptr;  // key schedule and chaining state
};

namespace {

constexpr int kBlock = 16;

const EVP_CIPHER* cipherFor(int mode, int keyLength) {
  switch (mode) {
    case AES_MODE_ECB:
      return keyLength == 16   ? EVP_aes_128_ecb()
             : keyLength == 24 ? EVP_aes_192_ecb()
                               : EVP_aes_256_ecb();
    case AES_MODE_CBC:
      return keyLength == 16   ? EVP_aes_128_cbc()
             : keyLength == 24 ? EVP_aes_192_cbc()
                               : EVP_aes_256_cbc();
    default:
      return keyLength == 16   ? EVP_aes_128_cfb1()
             : keyLength == 24 ? EVP_aes_192_cfb1()
                               : EVP_aes_256_cfb1();
  }
}

ZQAesState* makeState(int direction, int mode, const unsigned char* key, int keyLength,
                      const unsigned char* iv) {
  auto* state = new (std::nothrow) ZQAesState;
  if (!state) return nullptr;
  state->direction = direction;
  if (mode < AES_MODE_ECB || mode > AES_MODE_CFB1) {
    state->status = AES_Base::AES_BAD_MODE;
  } else if (direction != AES_Base::DIR_ENCRYPT && direction != AES_Base::DIR_DECRYPT) {
    state->status = AES_Base::AES_BAD_DIRECTION;
  } else if (keyLength != 16 && keyLength != 24 && keyLength != 32) {
    state->status = AES_Base::AES_BAD_KEY_LENGTH;
  } else if (!key) {
    state->status = AES_Base::AES_NULL_KEY;
  } else {
    static const unsigned char kZeroIv[kBlock] = {};
    state->ctx = EVP_CIPHER_CTX_new();
    const unsigned char* startIv = mode == AES_MODE_ECB ? nullptr : (iv ? iv : kZeroIv);
    int enc = direction == AES_Base::DIR_ENCRYPT ? 1 : 0;
    // Padding is ours; the engine sees whole blocks only.
    if (!state->ctx ||
        EVP_CipherInit_ex(state->ctx, cipherFor(mode, keyLength), nullptr, key, startIv, enc) !=
            1 ||
        EVP_CIPHER_CTX_set_padding(state->ctx, 0) != 1) {
      EVP_CIPHER_CTX_free(state->ctx);
      state->ctx = nullptr;
      state->status = AES_Base::AES_BAD_KEY_STATE;
    }
  }
  return state;
}

ZQAesState* cloneState(const ZQAesState* from) {
  if (!from) return nullptr;
  auto* state = new (std::nothrow) ZQAesState;
  if (!state) return nullptr;
  state->status = from->status;
  state->direction = from->direction;
  if (from->ctx) {
    state->ctx = EVP_CIPHER_CTX_new();
    if (!state->ctx || EVP_CIPHER_CTX_copy(state->ctx, from->ctx) != 1) {
      EVP_CIPHER_CTX_free(state->ctx);
      state->ctx = nullptr;
      state->status = AES_Base::AES_BAD_KEY_STATE;
    }
  }
  return state;
}

void destroyState(ZQAesState* state) {
  if (!state) return;
  EVP_CIPHER_CTX_free(state->ctx);  // clears the key schedule
  delete state;
}

// 0 when `state` may run in `direction`, else the code to return.
int checkUse(const ZQAesState* state, int direction) {
  if (!state) return AES_Base::AES_BAD_KEY_STATE;
  if (state->status != 0) return state->status;
  if (direction != AES_Base::DIR_ENCRYPT && direction != AES_Base::DIR_DECRYPT)
    return AES_Base::AES_BAD_DIRECTION;
  if (direction != state->direction) return AES_Base::AES_WRONG_DIRECTION;
  if (!state->ctx) return AES_Base::AES_BAD_KEY_STATE;
  return 0;
}

// Runs `bytes` (a multiple of the block) through the engine.
bool run(ZQAesState* state, const unsigned char* in, int bytes, unsigned char* out) {
  if (bytes == 0) return true;
  int outLength = 0;
  return EVP_CipherUpdate(state->ctx, out, &outLength, in, bytes) == 1 && outLength == bytes;
}

}  // namespace

AES_Base::AES_Base(int direction, AES_Mode mode, const unsigned char* key, int keyLength,
                   const unsigned char* iv)
    : m_state(makeState(direction, static_cast<int>(mode), key, keyLength, iv)) {}

AES_Base::~AES_Base() { destroyState(m_state); }

AES_Base::AES_Base(const AES_Base& other) : m_state(cloneState(other.m_state)) {}

AES_Base& AES_Base::operator=(const AES_Base& other) {
  if (this == &other) return *this;
  ZQAesState* copy = cloneState(other.m_state);
  destroyState(m_state);
  m_state = copy;
  return *this;
}

int AES_Base::getStatus() const {
  if (!m_state) return AES_BAD_KEY_STATE;
  if (m_state->status != 0) return m_state->status;
  return m_state->ctx ? 0 : AES_BAD_KEY_STATE;
}

int AES_Base::cipherBlocks(int direction, const unsigned char* in, int bits, unsigned char* out) {
  if (int code = checkUse(m_state, direction)) return code;
  if (bits < 1 || !in || !out) return 0;
  int blocks = bits / (kBlock * 8);
  if (!run(m_state, in, blocks * kBlock, out)) return AES_BAD_KEY_STATE;
  return blocks * kBlock * 8;
}

int AES_Base::cipherPadded(int direction, const unsigned char* in, int bytes, unsigned char* out) {
  if (int code = checkUse(m_state, direction)) return code;
  if (bytes < 0 || !out || (!in && bytes > 0)) return 0;
  unsigned char last[kBlock];
  if (direction == DIR_ENCRYPT) {
    if (bytes > INT_MAX - kBlock) return AES_BAD_DATA;  // the result would not fit
    int whole = bytes - bytes % kBlock;
    int rest = bytes - whole;
    unsigned char pad = static_cast<unsigned char>(kBlock - rest);
    if (rest) std::memcpy(last, in + whole, static_cast<size_t>(rest));
    std::memset(last + rest, pad, pad);
    bool ok = run(m_state, in, whole, out) && run(m_state, last, kBlock, out + whole);
    OPENSSL_cleanse(last, sizeof last);
    return ok ? whole + kBlock : AES_BAD_KEY_STATE;
  }
  if (bytes == 0) return 0;
  if (bytes % kBlock) return AES_BAD_DATA;
  int whole = bytes - kBlock;
  // The last block goes through a buffer, so `out` receives the plain bytes only.
  if (!run(m_state, in, whole, out) || !run(m_state, in + whole, kBlock, last)) {
    OPENSSL_cleanse(last, sizeof last);
    return AES_BAD_KEY_STATE;
  }
  int pad = last[kBlock - 1];
  bool good = pad >= 1 && pad <= kBlock;
  for (int i = kBlock - pad; good && i < kBlock; ++i) good = last[i] == pad;
  if (good) std::memcpy(out + whole, last, static_cast<size_t>(kBlock - pad));
  OPENSSL_cleanse(last, sizeof last);
  return good ? whole + kBlock - pad : AES_BAD_DATA;
}

AES_Encryption::AES_Encryption(AES_Mode mode, const unsigned char* key, int keyLength,
                               const unsigned char* iv)
    : AES_Base(DIR_ENCRYPT, mode, key, keyLength, iv) {}

int AES_Encryption::blockEncrypt(const unsigned char* in, int bits, unsigned char* out) {
  return cipherBlocks(DIR_ENCRYPT, in, bits, out);
}

int AES_Encryption::padEncrypt(const unsigned char* in, int bytes, unsigned char* out) {
  return cipherPadded(DIR_ENCRYPT, in, bytes, out);
}

AES_Decryption::AES_Decryption(AES_Mode mode, const unsigned char* key, int keyLength,
                               const unsigned char* iv)
    : AES_Base(DIR_DECRYPT, mode, key, keyLength, iv) {}

int AES_Decryption::blockDecrypt(const unsigned char* in, int bits, unsigned char* out) {
  return cipherBlocks(DIR_DECRYPT, in, bits, out);
}

int AES_Decryption::padDecrypt(const unsigned char* in, int bytes, unsigned char* out) {
  return cipherPadded(DIR_DECRYPT, in, bytes, out);
}

}  // namespace ZQCommonNS
