#pragma once

#include "foundation/lumCoder.h"
#include "foundation/lumColor.h"
#include "foundation/lumMat4.h"
#include "foundation/lumValue.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

/// Values of every kind that all coders keep, to be written with one and read with the same or another.
class CodedValues
{
public:
  void encode(ClumCoder& io_coder) const
  {
    io_coder.encodeInt(std::numeric_limits<int>::min(), "int");
    io_coder.encodeUnsignedInt(~0u, "unsigned");
    io_coder.encodeSizeT(~std::size_t(0), "size");
    io_coder.encodeFloat(0.1f, "float");
    io_coder.encodeDouble(0.1, "double");
    io_coder.encodeString("text", "string");
    io_coder.encodeBool(true, "bool");
    io_coder.encodeColor(m_color, "color");
    io_coder.encodeMat4(m_frame, "mat");
    io_coder.encodeVect3(m_vect, "vect");
    io_coder.encodeBuffer(m_bytes.data(), m_bytes.size(), "buffer");
    io_coder.encodeIntVector({3, -1}, "ints");
    io_coder.encodeIntVector({}, "none");
    io_coder.encodeUnsignedIntVector({3u, ~0u}, "unsigneds");
    io_coder.encodeSizeTVector({~std::size_t(0)}, "sizes");
    io_coder.encodeFloatVector({0.1f}, "floats");
    io_coder.encodeDoubleVector({0.25, 0.1}, "doubles");
    io_coder.encodeBoolVector({true, false, true}, "bools");
    io_coder.encodeMat4Vector({m_frame, ClumMat4()}, "mats");
    io_coder.encodePoint3Vector({ClumPoint3(1.0, 0.0, 2.0)}, "points");
    io_coder.encodeColorVector({m_color, ClumColor()}, "colors");
    io_coder.encodeStringVector({"a", "", " "}, "strings");
    io_coder.encodeValueVector(m_values, "values");
  }

  void expectIn(ClumCoder& io_coder) const
  {
    EXPECT_EQ(io_coder.decodeInt("int"), std::numeric_limits<int>::min());
    EXPECT_EQ(io_coder.decodeUnsignedInt("unsigned"), ~0u);
    EXPECT_EQ(io_coder.decodeSizeT("size"), ~std::size_t(0));
    EXPECT_EQ(io_coder.decodeFloat("float"), 0.1f);
    EXPECT_EQ(io_coder.decodeDouble("double"), 0.1);
    EXPECT_EQ(io_coder.decodeString("string"), "text");
    EXPECT_TRUE(io_coder.decodeBool("bool"));
    EXPECT_EQ(io_coder.decodeColor("color"), m_color);
    EXPECT_EQ(io_coder.decodeMat4("mat"), m_frame);
    EXPECT_EQ(io_coder.decodeVect3("vect"), m_vect);
    ASSERT_EQ(io_coder.decodeBufferSize("buffer"), m_bytes.size());
    std::string buffer(m_bytes.size(), '-');
    io_coder.decodeBufferData(buffer.data(), "buffer");
    EXPECT_EQ(buffer, m_bytes);
    expectVector(io_coder, &ClumCoder::decodeIntVector, "ints", {3, -1});
    expectVector(io_coder, &ClumCoder::decodeIntVector, "none", {});
    expectVector(io_coder, &ClumCoder::decodeUnsignedIntVector, "unsigneds", {3u, ~0u});
    expectVector(io_coder, &ClumCoder::decodeSizeTVector, "sizes", {~std::size_t(0)});
    expectVector(io_coder, &ClumCoder::decodeFloatVector, "floats", {0.1f});
    expectVector(io_coder, &ClumCoder::decodeDoubleVector, "doubles", {0.25, 0.1});
    expectVector(io_coder, &ClumCoder::decodeBoolVector, "bools", {true, false, true});
    expectVector(io_coder, &ClumCoder::decodeMat4Vector, "mats", {m_frame, ClumMat4()});
    expectVector(io_coder, &ClumCoder::decodePoint3Vector, "points", {ClumPoint3(1.0, 0.0, 2.0)});
    expectVector(io_coder, &ClumCoder::decodeColorVector, "colors", {m_color, ClumColor()});
    expectVector(io_coder, &ClumCoder::decodeStringVector, "strings", {"a", "", " "});
    expectVector(io_coder, &ClumCoder::decodeValueVector, "values", m_values);
  }

private:
  template <class CODER, class RESULT, class T>
  static void expectVector(ClumCoder& io_coder, RESULT (CODER::*i_decode)(const std::string&, std::vector<T>&),
                           const char* i_key, const std::vector<T>& i_expected)
  {
    std::vector<T> read(2);
    (io_coder.*i_decode)(i_key, read);
    EXPECT_EQ(read, i_expected) << i_key;
  }
  static ClumMat4 turned()
  {
    ClumMat4 frame;
    frame.rotate(0.3, 0.4, 1.0, 0.5);
    return frame;
  }

  const ClumMat4 m_frame = turned();
  const ClumColor m_color{0.1f, 0.2f, 0.3f, 0.4f};
  const ClumVect3 m_vect{1.0 / 3.0, -2.0, 1e300};
  const std::string m_bytes{"a\0\xff\x7f", 4};
  const std::vector<ClumValue> m_values{ClumValue(),    ClumValue(2),   ClumValue(3u),
                                        ClumValue("v"), ClumValue(0.1), ClumValue(true)};
};
