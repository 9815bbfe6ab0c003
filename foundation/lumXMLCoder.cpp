#include "foundation/lumXMLCoder.h"

#include "foundation/lumCodedGraph.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumFileReplacement.h"
#include "foundation/lumLogManager.h"
#include "foundation/lumXMLText.h"

namespace
{
/// Objects within objects. The stack has to hold as many calls of `initWithCoder` and of what frees the objects.
constexpr std::size_t MAXIMUM_OBJECT_DEPTH = 1000;

unsigned int registerFileCode(const char* i_name, unsigned int i_number, const char* i_message)
{
  return ClumRuntime::instance().registerStatusCode(ClumCodable::__classObject(), i_name, i_number, i_message);
}
} // namespace

const unsigned int ClumXMLCoder::UNREADABLE_FILE_ERROR =
  registerFileCode("UNREADABLE_FILE_ERROR", 10300, "The file cannot be read.");
const unsigned int ClumXMLCoder::MALFORMED_TEXT_ERROR =
  registerFileCode("MALFORMED_TEXT_ERROR", 10301, "The text is no coded graph of objects.");
const unsigned int ClumXMLCoder::REFUSED_OBJECT_ERROR =
  registerFileCode("REFUSED_OBJECT_ERROR", 10302, "The file holds an object that is not whole or sound.");
const unsigned int ClumXMLCoder::UNCODABLE_OBJECT_ERROR =
  registerFileCode("UNCODABLE_OBJECT_ERROR", 10303, "An object cannot be written to a file.");
const unsigned int ClumXMLCoder::UNWRITABLE_FILE_ERROR =
  registerFileCode("UNWRITABLE_FILE_ERROR", 10304, "The file cannot be written.");

ClumXMLCoder::ClumXMLCoder()
{
  m_graph->maximumDepth = MAXIMUM_OBJECT_DEPTH;
}

ClumXMLCoder::~ClumXMLCoder() = default;

ClumXMLCoderShPtr ClumXMLCoder::create()
{
  return lumCreate<ClumXMLCoder>();
}

lmStatus ClumXMLCoder::init(const ClumXMLCoderWkPtr& i_weakPtr)
{
  return ClumGraphCoder::init(i_weakPtr);
}

lmStatus ClumXMLCoder::parseFile(const std::string& i_path)
{
  std::string text;
  const std::string reason = lumReadFile(i_path, text);
  if (reason.empty())
    return parse(text, i_path);
  m_graph.reset(new CCodedGraph);
  m_parsingStatus = UNREADABLE_FILE_ERROR;
  ClumLogManager::addError("Cannot read " + i_path + ": " + reason + ".");
  return m_parsingStatus;
}

lmStatus ClumXMLCoder::parse(const std::string& i_text, const std::string& i_name)
{
  const auto begin = [&]
  {
    m_graph.reset(new CCodedGraph);
    m_graph->maximumDepth = MAXIMUM_OBJECT_DEPTH;
  };
  begin();
  m_encodingStatus = lmStatus();
  m_parsingStatus = lmStatus();
  m_graph->isForeign = true;
  m_graph->name = i_name;
  CXMLFault fault;
  if (lumReadXML(i_text, *m_graph, fault))
    return m_parsingStatus;
  ClumLogManager::addError("Cannot read " + i_name + ", " + lumPlaceInText(i_text, fault.place) + ": " + fault.reason +
                           ".");
  begin();
  m_parsingStatus = MALFORMED_TEXT_ERROR;
  return m_parsingStatus;
}

lmStatus ClumXMLCoder::writeToFile(const std::string& i_path) const
{
  std::string text, reason;
  lmStatus status = m_encodingStatus;
  if (status.failed())
    reason = "an object could not be encoded";
  else if (!lumWriteXML(*m_graph, text, reason))
    status = UNCODABLE_OBJECT_ERROR;
  else if (reason = lumReplaceFile(i_path, text); !reason.empty())
    status = UNWRITABLE_FILE_ERROR;
  if (status.failed())
    ClumLogManager::addError("Cannot write " + i_path + ": " + reason + ".");
  return status;
}

std::string ClumXMLCoder::data() const
{
  std::string text, reason;
  if (m_encodingStatus.failed())
    reason = "an object could not be encoded";
  else
    lumWriteXML(*m_graph, text, reason);
  if (!reason.empty())
    ClumLogManager::addError("Cannot write a text: " + reason + ".");
  return reason.empty() ? text : std::string();
}

lmStatus ClumXMLCoder::decodingStatus() const
{
  return m_graph->isRefused ? lmStatus(REFUSED_OBJECT_ERROR) : m_parsingStatus;
}

void ClumXMLCoder::encodeNullPointer(bool i_isNull, const std::string& i_key)
{
  if (!i_isNull)
  {
    ClumLogManager::addError("A file keeps no pointers: '" + i_key + "' is left out.");
    m_encodingStatus = UNCODABLE_OBJECT_ERROR;
  }
  encodeObject(nullptr, i_key);
}

void ClumXMLCoder::encodePointer(void* i_pointer, const std::string& i_key)
{
  encodeNullPointer(!i_pointer, i_key);
}

void ClumXMLCoder::encodeSharedPointer(const ShPtr<void>& i_pointer, const std::string& i_key)
{
  encodeNullPointer(!i_pointer, i_key);
}

void ClumXMLCoder::encodeConstSharedPointer(const ShPtr<const void>& i_pointer, const std::string& i_key)
{
  encodeNullPointer(!i_pointer, i_key);
}

void* ClumXMLCoder::decodePointer(const std::string& i_key)
{
  m_graph->find<CCodedReference>(i_key);
  return nullptr;
}

ShPtr<void> ClumXMLCoder::decodeSharedPointer(const std::string& i_key)
{
  decodePointer(i_key);
  return ShPtr<void>();
}

ShPtr<const void> ClumXMLCoder::decodeConstSharedPointer(const std::string& i_key)
{
  return decodeSharedPointer(i_key);
}

void ClumXMLCoder::handleEncodingFailure(const lmStatus& i_status)
{
  ClumGraphCoder::handleEncodingFailure(i_status);
  m_encodingStatus.setWithReason(UNCODABLE_OBJECT_ERROR, i_status);
}
