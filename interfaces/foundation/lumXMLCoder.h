#pragma once

#include "foundation/lumGraphCoder.h"

/// The coder of files: writes a graph of objects as XML and reads it back (`docs/file-format.md`).
///
/// Encode objects under keys, then `writeToFile`; or `parseFile`, then decode the same keys. Every double comes back to
/// the bit. What a file cannot keep, such as a pointer to something that is not codable, makes `writeToFile` fail. What
/// is read is not trusted: a text that is no such graph is refused by `parseFile`, and an object that its class refuses
/// makes `decodeObject` give null, in both cases with one line in the log that names the place. Nothing of a refused
/// graph is awakened.
class LUM_API ClumXMLCoder : public ClumGraphCoder
{
  LUM_UNREFLECTED(ClumXMLCoder, ClumGraphCoder);

public:
  static const unsigned int UNREADABLE_FILE_ERROR;
  static const unsigned int MALFORMED_TEXT_ERROR;
  static const unsigned int REFUSED_OBJECT_ERROR;
  static const unsigned int UNCODABLE_OBJECT_ERROR;
  static const unsigned int UNWRITABLE_FILE_ERROR;

  ~ClumXMLCoder() override;
  static ClumXMLCoderShPtr create();

  /// Replaces all that the coder holds by the graph in a file. On failure the coder is empty.
  /// @param i_path in UTF-8.
  /// @return `UNREADABLE_FILE_ERROR` or `MALFORMED_TEXT_ERROR`, with a log entry that names the file and the place.
  lmStatus parseFile(const std::string& i_path);
  /// The same for a text in memory. @param i_name stands for it in the log.
  lmStatus parse(const std::string& i_text, const std::string& i_name = "text");

  /// Writes what was encoded. The file is there whole or not at all: a file of that name stays as it was until the new
  /// one is complete on the disk, whatever happens meanwhile.
  /// @return `UNCODABLE_OBJECT_ERROR` if some object could not be encoded, `UNWRITABLE_FILE_ERROR` if the file cannot
  /// be written, with a log entry that names the file and the reason.
  lmStatus writeToFile(const std::string& i_path) const;
  /// The text that `writeToFile` writes; empty, with a log entry, if it cannot.
  std::string data() const;

  /// Success, or why what was parsed last cannot be decoded: the parser's status, or `REFUSED_OBJECT_ERROR` once
  /// decoding met an object that its class refuses.
  lmStatus decodingStatus() const;

  void encodePointer(void* i_pointer, const std::string& i_key) override;
  void encodeSharedPointer(const ShPtr<void>& i_pointer, const std::string& i_key) override;
  void encodeConstSharedPointer(const ShPtr<const void>& i_pointer, const std::string& i_key) override;
  void* decodePointer(const std::string& i_key) override;
  ShPtr<void> decodeSharedPointer(const std::string& i_key) override;
  ShPtr<const void> decodeConstSharedPointer(const std::string& i_key) override;

protected:
  ClumXMLCoder();
  lmStatus init(const ClumXMLCoderWkPtr& i_weakPtr);
  void handleEncodingFailure(const lmStatus& i_status) override;

private:
  void encodeNullPointer(bool i_isNull, const std::string& i_key);

  lmStatus m_encodingStatus;
  lmStatus m_parsingStatus;
};
