#pragma once

#include <cstddef>
#include <string>

struct CCodedGraph;

// The text form of a coded graph, told in docs/file-format.md.

/// @return false, with the reason, if the graph holds what a text cannot keep.
bool lumWriteXML(const CCodedGraph& i_graph, std::string& o_text, std::string& o_error);

/// Why a text was refused.
struct CXMLFault
{
  std::string reason;
  std::size_t place = 0; ///< in the text, in bytes
};

/// Fills an empty graph from a text. @return false, with the first fault, if the text is no such graph; the
/// graph is then only good for being dropped.
bool lumReadXML(const std::string& i_text, CCodedGraph& io_graph, CXMLFault& o_fault);

/// @return true if the characters can stand in an XML text: well-formed UTF-8, no control character but tab, line feed
/// and carriage return.
bool lumIsXMLText(const char* i_text, std::size_t i_size);

/// Tells whether ownership in a graph is as among live objects.
/// @return false, with the object and the reason, if one owns itself over others, or if shared objects unfold to a tree
/// far larger than the graph: whoever walked such a tree would not come to an end.
bool lumCheckOwners(const CCodedGraph& i_graph, std::size_t& o_object, std::string& o_reason);
