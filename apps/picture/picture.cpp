#include "picture.h"

#include "tessellation.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

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
} // namespace

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
    findVisible();
  }

  /// How well the poses are seen: a view of all of them a little is better than one of a few in full.
  double clarity() const { return m_clarity; }

  std::string svg() const
  {
    char header[160];
    std::snprintf(header, sizeof header,
                  "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"%d\" height=\"%d\" viewBox=\"0 0 %d %d\">\n",
                  m_width, m_height, m_width, m_height);
    std::string text = header;
    text += "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
    appendLayer(m_isObstacle, 1.0, text);
    appendLayer(m_isPose, 1.0, text);
    appendLayer(m_isVeil, 0.6, text);
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
      if (triangle.along >= 0.0)
        for (const Vector& corner : triangle.corners)
        {
          const Vector seen = {dot(corner, m_right), dot(corner, m_up), dot(corner, m_towards)};
          for (int i = 0; i < 3; ++i)
          {
            low[i] = std::min(low[i], seen[i]);
            high[i] = std::max(high[i], seen[i]);
          }
        }
    // The motion fills the picture but for a margin; of the obstacles one sees what lies around it.
    const double margin = 0.18 * std::max(high[0] - low[0], high[1] - low[1]) + 1e-300;
    m_scale = m_width / (high[0] - low[0] + 2.0 * margin);
    m_height = static_cast<int>(std::clamp((high[1] - low[1] + 2.0 * margin) * m_scale, 0.3 * m_width, 2.0 * m_width));
    m_left = low[0] - margin;
    m_top = 0.5 * (low[1] + high[1]) + 0.5 * m_height / m_scale;
    m_far = low[2] - margin;
    m_depth = high[2] - low[2] + 2.0 * margin;
  }

  /// Pixel coordinates x, y and depth, larger is nearer.
  Vector project(const Vector& i_point) const
  {
    return {(dot(i_point, m_right) - m_left) * m_scale, (m_top - dot(i_point, m_up)) * m_scale,
            dot(i_point, m_towards)};
  }

  /// What is nearest at each pixel.
  struct Buffer
  {
    std::vector<double> depth;
    std::vector<std::size_t> owner;
  };

  /// Three layers: the obstacles, the poses over them, and as a veil what of the obstacles lies in front of a pose.
  void findVisible()
  {
    const std::size_t count = m_picture.m_triangles.size();
    const Buffer obstacles = buffer([](double i_along) { return i_along < 0.0; });
    const Buffer poses = buffer([](double i_along) { return i_along >= 0.0; });
    m_isObstacle.assign(count, false);
    m_isPose.assign(count, false);
    m_isVeil.assign(count, false);
    std::map<double, double> pixelsByPose;
    for (std::size_t pixel = 0; pixel < poses.owner.size(); ++pixel)
    {
      const std::size_t behind = obstacles.owner[pixel], shown = poses.owner[pixel];
      if (behind != count)
        m_isObstacle[behind] = true;
      if (shown == count)
        continue;
      m_isPose[shown] = true;
      const bool isVeiled = behind != count && obstacles.depth[pixel] > poses.depth[pixel];
      if (isVeiled)
        m_isVeil[behind] = true;
      pixelsByPose[m_picture.m_triangles[shown].along] += isVeiled ? 0.1 : 1.0;
    }
    for (const auto& [along, pixels] : pixelsByPose)
      m_clarity += std::sqrt(pixels);
  }

  template <class CHOICE>
  Buffer buffer(CHOICE i_isChosen) const
  {
    const std::size_t pixels = static_cast<std::size_t>(m_width) * m_height;
    Buffer result{std::vector<double>(pixels, -std::numeric_limits<double>::infinity()),
                  std::vector<std::size_t>(pixels, m_picture.m_triangles.size())};
    for (std::size_t t = 0; t < m_picture.m_triangles.size(); ++t)
      if (i_isChosen(m_picture.m_triangles[t].along))
        scan(t, result.depth, result.owner);
    return result;
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

  /// The triangles from far to near. Runs of one colour are one path, its corners told relative to each other in tenths
  /// of a pixel: a picture of some ten thousand triangles stays small.
  void appendLayer(const std::vector<bool>& i_isShown, double i_opacity, std::string& io_text) const
  {
    std::vector<std::pair<double, std::size_t>> order;
    for (std::size_t t = 0; t < i_isShown.size(); ++t)
      if (i_isShown[t])
      {
        const auto& corners = m_picture.m_triangles[t].corners;
        order.emplace_back(dot(corners[0], m_towards) + dot(corners[1], m_towards) + dot(corners[2], m_towards), t);
      }
    std::sort(order.begin(), order.end());
    char group[160];
    std::snprintf(group, sizeof group,
                  "<g transform=\"scale(0.1)\" fill=\"currentColor\" stroke=\"currentColor\" stroke-width=\"6\" "
                  "stroke-linejoin=\"round\" opacity=\"%.1f\">\n",
                  i_opacity);
    io_text += group;
    std::string colour;
    for (const auto& [depth, t] : order)
    {
      const std::string next = shade(m_picture.m_triangles[t], depth / 3.0);
      if (next != colour)
        io_text += (colour.empty() ? "<path color=\"" : "\"/>\n<path color=\"") + next + "\" d=\"";
      colour = next;
      appendOutline(m_picture.m_triangles[t], io_text);
    }
    io_text += colour.empty() ? "</g>\n" : "\"/>\n</g>\n";
  }

  void appendOutline(const Picture::Triangle& i_triangle, std::string& io_text) const
  {
    long x[3], y[3];
    for (int i = 0; i < 3; ++i)
    {
      const Vector seen = project(i_triangle.corners[i]);
      x[i] = std::lround(10.0 * seen[0]);
      y[i] = std::lround(10.0 * seen[1]);
    }
    char text[96];
    std::snprintf(text, sizeof text, "M%ld %ldl%ld %ld %ld %ldz", x[0], y[0], x[1] - x[0], y[1] - y[0], x[2] - x[1],
                  y[2] - y[1]);
    io_text += text;
  }

  std::string shade(const Picture::Triangle& i_triangle, double i_depth) const
  {
    Vector normal =
      cross(minus(i_triangle.corners[1], i_triangle.corners[0]), minus(i_triangle.corners[2], i_triangle.corners[0]));
    const double length = std::sqrt(dot(normal, normal));
    const double facing = length > 0.0 ? std::fabs(dot(normal, m_towards)) / length : 1.0;
    const double nearness = std::clamp((i_depth - m_far) / m_depth, 0.0, 1.0);
    const double light = (0.6 + 0.4 * facing) * (0.7 + 0.3 * nearness);
    const double s = i_triangle.along;
    const Vector base =
      s < 0.0 ? Vector{226.0, 228.0, 232.0} : Vector{40.0 + 205.0 * s, 120.0 + 20.0 * s, 235.0 - 205.0 * s};
    const double step = 0.02 * std::round(light / 0.02);
    return hexColour({base[0] * step, base[1] * step, base[2] * step});
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
  std::vector<bool> m_isObstacle, m_isPose, m_isVeil;
  double m_clarity = 0.0;
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

void Picture::refine()
{
  Vector low, high;
  low.fill(std::numeric_limits<double>::infinity());
  high.fill(-std::numeric_limits<double>::infinity());
  for (const Triangle& triangle : m_triangles)
    if (triangle.along >= 0.0)
      for (const Vector& corner : triangle.corners)
        for (int i = 0; i < 3; ++i)
        {
          low[i] = std::min(low[i], corner[i]);
          high[i] = std::max(high[i], corner[i]);
        }
  const Vector extent = minus(high, low);
  const double longest = 0.0025 * dot(extent, extent);
  // Triangles are cut while they are longer than a twentieth of the motion, but not into more than a page can hold.
  for (std::size_t t = 0; t < m_triangles.size() && m_triangles.size() < 300000; ++t)
    while (cutLongestEdge(t, longest) && m_triangles.size() < 300000)
    {
    }
}

bool Picture::cutLongestEdge(std::size_t i_triangle, double i_longestSquared)
{
  Triangle& whole = m_triangles[i_triangle];
  int edge = 0;
  double squared = 0.0;
  for (int i = 0; i < 3; ++i)
  {
    const Vector along = minus(whole.corners[(i + 1) % 3], whole.corners[i]);
    if (dot(along, along) > squared)
    {
      squared = dot(along, along);
      edge = i;
    }
  }
  if (!(squared > i_longestSquared))
    return false;
  const Vector &a = whole.corners[edge], &b = whole.corners[(edge + 1) % 3];
  const Vector middle = {0.5 * (a[0] + b[0]), 0.5 * (a[1] + b[1]), 0.5 * (a[2] + b[2])};
  Triangle half = whole;
  half.corners[edge] = middle;
  whole.corners[(edge + 1) % 3] = middle;
  m_triangles.push_back(half);
  return true;
}

std::string Picture::svg(int i_width)
{
  refine();
  const double pi = 3.14159265358979323846;
  double bestAzimuth = 0.25 * pi, bestElevation = 0.4;
  double best = 0.0;
  for (const double elevation : {0.35, 0.75})
    for (int i = 0; i < 12; ++i)
    {
      const double azimuth = pi * (i + 0.5) / 6.0;
      const PictureView view(*this, azimuth, elevation, std::min(i_width, 300));
      if (view.clarity() > best)
      {
        best = view.clarity();
        bestAzimuth = azimuth;
        bestElevation = elevation;
      }
    }
  return PictureView(*this, bestAzimuth, bestElevation, i_width).svg();
}
