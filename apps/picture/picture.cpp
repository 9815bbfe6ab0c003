#include "picture.h"

#include "tessellation.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace
{
using Vector = std::array<double, 3>;

Vector minus(const Vector& i_a, const Vector& i_b)
{
  return {i_a[0] - i_b[0], i_a[1] - i_b[1], i_a[2] - i_b[2]};
}

double dot(const Vector& i_a, const Vector& i_b)
{
  return i_a[0] * i_b[0] + i_a[1] * i_b[1] + i_a[2] * i_b[2];
}

Vector cross(const Vector& i_a, const Vector& i_b)
{
  return {i_a[1] * i_b[2] - i_a[2] * i_b[1], i_a[2] * i_b[0] - i_a[0] * i_b[2], i_a[0] * i_b[1] - i_a[1] * i_b[0]};
}

std::string hexColour(const Vector& i_rgb)
{
  char text[8];
  std::snprintf(text, sizeof text, "#%02x%02x%02x", static_cast<int>(std::clamp(i_rgb[0], 0.0, 255.0)),
                static_cast<int>(std::clamp(i_rgb[1], 0.0, 255.0)), static_cast<int>(std::clamp(i_rgb[2], 0.0, 255.0)));
  return text;
}

std::string coordinates(double i_x, double i_y)
{
  char text[48];
  std::snprintf(text, sizeof text, "%.1f %.1f", i_x, i_y);
  return text;
}
}  // namespace

/// A scene seen along one direction, orthographically, with hidden triangles found by a depth buffer.
class PictureView
{
public:
  PictureView(const Picture& i_picture, double i_azimuth, double i_elevation, int i_width)
    : m_picture(i_picture), m_width(i_width)
  {
    const double ca = std::cos(i_azimuth), sa = std::sin(i_azimuth);
    const double ce = std::cos(i_elevation), se = std::sin(i_elevation);
    m_right = {-sa, ca, 0.0};
    m_towards = {ca * ce, sa * ce, se};
    m_up = cross(m_towards, m_right);
    fit();
    fillDepthBuffer();
  }

  /// Pixels that show the moving bodies.
  std::size_t countPosePixels() const { return m_posePixels; }

  std::string svg() const
  {
    char header[160];
    std::snprintf(header, sizeof header,
                  "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\">\n",
                  m_width, m_height, m_width, m_height);
    std::string text = header;
    text += "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n<g stroke-width=\"0.6\" "
            "stroke-linejoin=\"round\">\n";
    appendTriangles(text);
    text += "</g>\n";
    appendTrack(text);
    return text + "</svg>\n";
  }

private:
  void fit()
  {
    Vector low{}, high{};
    low.fill(std::numeric_limits<double>::infinity());
    high.fill(-std::numeric_limits<double>::infinity());
    for (const Picture::Triangle& triangle : m_picture.m_triangles)
      for (const Vector& corner : triangle.corners)
      {
        const Vector seen = {dot(corner, m_right), dot(corner, m_up), dot(corner, m_towards)};
        for (int i = 0; i < 3; ++i)
        {
          low[i] = std::min(low[i], seen[i]);
          high[i] = std::max(high[i], seen[i]);
        }
      }
    const double margin = 20.0;
    const double extent = std::max(high[0] - low[0], 1e-300);
    m_scale = (m_width - 2.0 * margin) / extent;
    m_height = static_cast<int>(std::min((high[1] - low[1]) * m_scale + 2.0 * margin, 3.0 * m_width));
    m_left = low[0] - margin / m_scale;
    m_top = high[1] + margin / m_scale;
    m_far = low[2];
    m_depth = std::max(high[2] - low[2], 1e-300);
  }

  /// Pixel coordinates x, y and depth, larger is nearer.
  Vector project(const Vector& i_point) const
  {
    return {(dot(i_point, m_right) - m_left) * m_scale, (m_top - dot(i_point, m_up)) * m_scale,
            dot(i_point, m_towards)};
  }

  void fillDepthBuffer()
  {
    const std::size_t count = m_picture.m_triangles.size();
    std::vector<double> depth(static_cast<std::size_t>(m_width) * m_height, -std::numeric_limits<double>::infinity());
    std::vector<std::size_t> owner(depth.size(), count);
    for (std::size_t t = 0; t < count; ++t)
      scan(t, depth, owner);
    m_isVisible.assign(count, false);
    for (const std::size_t t : owner)
      if (t != count)
      {
        m_isVisible[t] = true;
        m_posePixels += m_picture.m_triangles[t].along >= 0.0;
      }
  }

  void scan(std::size_t i_triangle, std::vector<double>& io_depth, std::vector<std::size_t>& io_owner) const
  {
    const auto& corners = m_picture.m_triangles[i_triangle].corners;
    const Vector a = project(corners[0]), b = project(corners[1]), c = project(corners[2]);
    const double area = (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
    if (std::fabs(area) < 1e-12)
      return;
    const int x0 = std::max(0, static_cast<int>(std::floor(std::min({a[0], b[0], c[0]}))));
    const int x1 = std::min(m_width - 1, static_cast<int>(std::ceil(std::max({a[0], b[0], c[0]}))));
    const int y0 = std::max(0, static_cast<int>(std::floor(std::min({a[1], b[1], c[1]}))));
    const int y1 = std::min(m_height - 1, static_cast<int>(std::ceil(std::max({a[1], b[1], c[1]}))));
    for (int y = y0; y <= y1; ++y)
      for (int x = x0; x <= x1; ++x)
      {
        const double px = x + 0.5, py = y + 0.5;
        const double u = ((b[0] - px) * (c[1] - py) - (b[1] - py) * (c[0] - px)) / area;
        const double v = ((c[0] - px) * (a[1] - py) - (c[1] - py) * (a[0] - px)) / area;
        const double w = 1.0 - u - v;
        if (u < -1e-9 || v < -1e-9 || w < -1e-9)
          continue;
        const std::size_t pixel = static_cast<std::size_t>(y) * m_width + x;
        const double z = u * a[2] + v * b[2] + w * c[2];
        if (z > io_depth[pixel])
        {
          io_depth[pixel] = z;
          io_owner[pixel] = i_triangle;
        }
      }
  }

  void appendTriangles(std::string& io_text) const
  {
    std::vector<std::pair<double, std::size_t>> order;
    for (std::size_t t = 0; t < m_isVisible.size(); ++t)
      if (m_isVisible[t])
      {
        const auto& corners = m_picture.m_triangles[t].corners;
        order.emplace_back(dot(corners[0], m_towards) + dot(corners[1], m_towards) + dot(corners[2], m_towards), t);
      }
    std::sort(order.begin(), order.end());
    for (const auto& [depth, t] : order)
    {
      const auto& corners = m_picture.m_triangles[t].corners;
      const std::string colour = shade(m_picture.m_triangles[t], depth / 3.0);
      io_text += "<path fill=\"" + colour + "\" stroke=\"" + colour + "\" d=\"M";
      for (int i = 0; i < 3; ++i)
      {
        const Vector seen = project(corners[i]);
        io_text += (i ? "L" : "") + coordinates(seen[0], seen[1]);
      }
      io_text += "z\"/>\n";
    }
  }

  std::string shade(const Picture::Triangle& i_triangle, double i_depth) const
  {
    Vector normal = cross(minus(i_triangle.corners[1], i_triangle.corners[0]),
                          minus(i_triangle.corners[2], i_triangle.corners[0]));
    const double length = std::sqrt(dot(normal, normal));
    const double facing = length > 0.0 ? std::fabs(dot(normal, m_towards)) / length : 1.0;
    const double nearness = (i_depth - m_far) / m_depth;
    const double light = (0.45 + 0.55 * facing) * (0.62 + 0.38 * nearness);
    const double s = i_triangle.along;
    const Vector base = s < 0.0 ? Vector{206.0, 208.0, 212.0}
                                : Vector{40.0 + 205.0 * s, 120.0 + 20.0 * s, 235.0 - 205.0 * s};
    return hexColour({base[0] * light, base[1] * light, base[2] * light});
  }

  void appendTrack(std::string& io_text) const
  {
    if (m_picture.m_track.size() < 2)
      return;
    io_text += "<polyline fill=\"none\" stroke=\"#202020\" stroke-width=\"1.5\" stroke-dasharray=\"5 4\" points=\"";
    for (const Vector& point : m_picture.m_track)
    {
      const Vector seen = project(point);
      io_text += coordinates(seen[0], seen[1]) + " ";
    }
    io_text += "\"/>\n";
  }

  const Picture& m_picture;
  int m_width;
  int m_height = 0;
  Vector m_right, m_up, m_towards;
  double m_scale = 1.0, m_left = 0.0, m_top = 0.0, m_far = 0.0, m_depth = 1.0;
  std::vector<bool> m_isVisible;
  std::size_t m_posePixels = 0;
};

void Picture::addObstacle(const ClumGeometry& i_geometry, const ClumMat4& i_position)
{
  add(i_geometry, i_position, -1.0);
}

void Picture::addPose(const ClumGeometry& i_geometry, const ClumMat4& i_position, double i_along)
{
  add(i_geometry, i_position, std::clamp(i_along, 0.0, 1.0));
}

void Picture::addTrackPoint(const ClumMat4& i_position)
{
  m_track.push_back({i_position(0, 3), i_position(1, 3), i_position(2, 3)});
}

void Picture::add(const ClumGeometry& i_geometry, const ClumMat4& i_position, double i_along)
{
  for (const std::array<ClumPoint3, 3>& corners : tessellate(i_geometry))
  {
    Triangle triangle;
    triangle.along = i_along;
    for (int i = 0; i < 3; ++i)
    {
      const ClumPoint3 placed = i_position * corners[i];
      triangle.corners[i] = {placed[0], placed[1], placed[2]};
    }
    m_triangles.push_back(triangle);
  }
}

std::string Picture::svg(int i_width) const
{
  const double pi = 3.14159265358979323846;
  double bestAzimuth = 0.25 * pi, bestElevation = 0.4;
  std::size_t bestPixels = 0;
  for (const double elevation : {0.35, 0.75})
    for (int i = 0; i < 12; ++i)
    {
      const double azimuth = pi * (i + 0.5) / 6.0;
      const PictureView view(*this, azimuth, elevation, std::min(i_width, 300));
      if (view.countPosePixels() > bestPixels)
      {
        bestPixels = view.countPosePixels();
        bestAzimuth = azimuth;
        bestElevation = elevation;
      }
    }
  return PictureView(*this, bestAzimuth, bestElevation, i_width).svg();
}
