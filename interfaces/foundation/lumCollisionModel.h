#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"
#include "foundation/lumPoint3.h"

/// What a collision toolkit keeps of a shape: immutable, made once, shared by all copies of a leaf and by all threads.
///
/// Only the toolkit that made it can read more of it than its enclosing ball.
class LUM_API ClumCollisionModel
{
public:
  virtual ~ClumCollisionModel();

  /// A ball around the whole shape, in the shape's own coordinates.
  const ClumPoint3& center() const { return m_center; }
  double radius() const { return m_radius; }
  /// Tells the kind of toolkit that made it.
  const void* kind() const { return m_kind; }

protected:
  explicit ClumCollisionModel(const void* i_kind) : m_kind(i_kind) {}
  ClumCollisionModel(const ClumCollisionModel&) = delete;
  ClumCollisionModel& operator=(const ClumCollisionModel&) = delete;

  ClumPoint3 m_center;
  double m_radius = 0.0;

private:
  const void* m_kind;
};
