#pragma once

#include "foundation/lumMat4.h"
#include "kinematics/orvKinematicalEffect.h"
#include "paths/handles.h"

#include <vector>

/// A motion from frame to frame, straight and by the shortest rotation: a path effect that makes its own path.
///
/// The one dof is the parameter along the path, from 0 at the first frame to 1 at the last. Each frame is met at the
/// part of the path's length that lies before it; lengths are Euclidean in x, y, z and the angles of Rx·Ry·Rz, weighed
/// as dofs are. There is no inverse, and there are no derivatives.
class LUM_API CorvKEEuclideanPath : public CorvKinematicalEffect
{
  LUM_CONCRETE(CorvKEEuclideanPath, CorvKinematicalEffect);
  ORV_EFFECT_OPERATIONS

public:
  ~CorvKEEuclideanPath() override;
  /// @return null without a frame, or if two that follow each other are half a turn apart.
  static CorvKEEuclideanPathShPtr create(const std::vector<ClumMat4>& i_positions);
  static CorvKEEuclideanPathShPtr create(const std::vector<ClumMat4>& i_positions, const std::string& i_type);
  static CorvKEEuclideanPathShPtr createCopy(const CorvKEEuclideanPathConstShPtr& i_objectToCopy);
  CorvKinematicalEffectShPtr clone() const override;

  /// The frames of the path's configurations.
  std::vector<ClumMat4> mat4List() const;
  /// The path, of a private device with one free-flying joint. It can be replaced by one of the same space. @{
  CorvPathConstShPtr path() const;
  lmStatus path(const CorvPathConstShPtr& i_path);
  /// @}

  bool operator==(const CorvKinematicalEffect& i_other) const override;

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  CorvKEEuclideanPath() = default;
  explicit CorvKEEuclideanPath(const std::string& i_type);
  CorvKEEuclideanPath(const CorvKEEuclideanPath& i_other);
  lmStatus init(const CorvKEEuclideanPathWkPtr& i_weakPtr, const std::vector<ClumMat4>& i_positions);
  lmStatus init(const CorvKEEuclideanPathWkPtr& i_weakPtr, const CorvKEEuclideanPathConstShPtr& i_source);

private:
  CorvKEPathShPtr m_KEPath;
};
