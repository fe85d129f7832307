// Ciphers: AES (FIPS 197) in ECB, CBC and one-bit CFB, and the RC4 stream cipher.
#pragma once

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// Chaining of AES blocks. Any int converts to it; those outside these are bad modes.
enum AES_Mode : int {
  AES_MODE_ECB = 0,  ///< each block alone
  AES_MODE_CBC = 1,  ///< cipher block chaining
  AES_MODE_CFB1 = 2  ///< cipher feedback, one bit at a time
};

/// The key schedule and chaining state behind an AES object; opaque outside the library.
struct ZQAesState;

/// What AES_Encryption and AES_Decryption share: the key, the mode, and the chaining state,
/// which runs on from call to call as one stream of blocks.
class ZQCOMMON_API AES_Base {
 public:
  /// Negative results of the operations.
  enum Result {
    AES_BAD_MODE = -1,         ///< the mode is none of AES_Mode
    AES_BAD_DIRECTION = -2,    ///< the direction is neither encryption nor decryption
    AES_BAD_KEY_LENGTH = -3,   ///< the key is not 16, 24 or 32 bytes long
    AES_NULL_KEY = -4,         ///< no key was given
    AES_BAD_KEY_STATE = -5,    ///< the key or chaining state cannot be used
    AES_WRONG_DIRECTION = -6,  ///< an encryption key used to decrypt, or the reverse
    AES_BAD_DATA = -7          ///< padded input of a wrong length or with wrong padding
  };
  /// Directions of a key.
  enum Direction { DIR_ENCRYPT = 0, DIR_DECRYPT = 1 };

  virtual ~AES_Base();
  /// A copy has the same key and continues the chain from the same point, independently.
  AES_Base(const AES_Base& other);
  AES_Base& operator=(const AES_Base& other);

  /// 0 when the object has a usable key, otherwise the negative code every operation returns.
  int getStatus() const;

 protected:
  /// Makes the key for `direction`; a failure is kept and returned by every later call.
  AES_Base(int direction, AES_Mode mode, const unsigned char* key, int keyLength,
           const unsigned char* iv);

  /// Runs whole 128-bit blocks of `bits` through the cipher in `direction`; the bits processed.
  int cipherBlocks(int direction, const unsigned char* in, int bits, unsigned char* out);
  /// Pads and encrypts (or decrypts and unpads) `bytes`; the output length in bytes.
  int cipherPadded(int direction, const unsigned char* in, int bytes, unsigned char* out);

 private:
  ZQAesState* m_state;
};

/// AES encryption with a key of 16, 24 or 32 bytes; a null `iv` means 16 zero bytes.
class ZQCOMMON_API AES_Encryption : public AES_Base {
 public:
  AES_Encryption(AES_Mode mode, const unsigned char* key, int keyLength,
                 const unsigned char* iv = nullptr);

  /// Encrypts the whole 128-bit blocks of `bits` bits; the bits processed, 0 for a length
  /// below 1, or a negative code.
  int blockEncrypt(const unsigned char* in, int bits, unsigned char* out);
  /// Encrypts `bytes` bytes with PKCS #7 padding (1 to 16 bytes, always); the output length,
  /// `bytes` rounded down to 16 plus 16, or a negative code.
  int padEncrypt(const unsigned char* in, int bytes, unsigned char* out);
};

/// AES decryption with a key of 16, 24 or 32 bytes; a null `iv` means 16 zero bytes.
class ZQCOMMON_API AES_Decryption : public AES_Base {
 public:
  AES_Decryption(AES_Mode mode, const unsigned char* key, int keyLength,
                 const unsigned char* iv = nullptr);

  /// Decrypts the whole 128-bit blocks of `bits` bits; the bits processed, 0 for a length
  /// below 1, or a negative code.
  int blockDecrypt(const unsigned char* in, int bits, unsigned char* out);
  /// Decrypts `bytes` bytes (a multiple of 16) and removes the PKCS #7 padding; the plain
  /// length, or a negative code (AES_BAD_DATA for a wrong length or padding).
  int padDecrypt(const unsigned char* in, int bytes, unsigned char* out);
};

/// The RC4 stream cipher; its state runs on from call to call.
class ZQCOMMON_API RC4_KEY {
 public:
  /// Sets up the state from `length` bytes of key; a null or empty key leaves the state
  /// unmixed, so the stream is that of no key at all.
  RC4_KEY(int length, const unsigned char* key);

  /// Combines `length` bytes with the key stream into `out` (encrypts and decrypts alike);
  /// `in` and `out` may be the same buffer.
  void RC4(int length, const unsigned char* in, unsigned char* out);

 private:
  unsigned char m_x;
  unsigned char m_y;
  unsigned char m_s[256];
};

}  // namespace ZQCommonNS
