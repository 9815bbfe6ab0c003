#pragma once

#include "validation/orvValidatorCfgCollisionBase.h"

#include <memory>

/// The collision validator of devices whose bodies are `CorvBodyLumScene`: it asks the tests of the collision scene.
///
/// A validation moves nothing. The scene's tests are taken apart once, for a version of the device and the scene, into
/// pairs of placed models; a configuration's body positions go to scratch memory and the placed pairs straight to the
/// toolkit. The pair that collided last is asked first, then the pairs that the broad phase finds, nearest first; once
/// what is known of a body settles what it can use, no farther pair of it is looked at. A pair of two bodies counts
/// only while "orvane.core.validator.cfg.collision.autocol-activation" is not false. Verdicts without distances are
/// shared by the configurations that they were given to.
class LUM_API CorvValidatorCfgLumScene : public CorvValidatorCfgCollisionBase
{
  LUM_CONCRETE(CorvValidatorCfgLumScene, CorvValidatorCfgCollisionBase);

public:
  ~CorvValidatorCfgLumScene() override;
  static CorvValidatorCfgLumSceneShPtr create(const CorvConfigSpaceShPtr& i_space, bool i_isDistanceValidator = false);
  static CorvValidatorCfgLumSceneShPtr createCopy(const CorvValidatorCfgLumSceneConstShPtr& i_objectToCopy);
  CorvValidatorShPtr clone() const override;

  bool doValidateConfig(const CorvConfig& i_cfg, const ClumParameterMapConstShPtr& i_params,
                        const CorvValidationReportConstShPtr& i_report,
                        CorvValidationReportShPtr& o_report) const override;

  std::uint64_t sceneStamp() const override;
  void willTestMotion() const override;

  /// The scene whose tests are asked, instead of the device's own; null for the device's.
  const ClumSceneShPtr& scene() const { return m_scene; }
  void setScene(const ClumSceneShPtr& i_scene);
  /// Drops what was taken from the scene; the next validation takes it anew. Changes that scene, device and geometries
  /// tell by their versions are seen without this call.
  void sceneDidChange() const;

protected:
  CorvValidatorCfgLumScene();
  CorvValidatorCfgLumScene(const CorvConfigSpaceShPtr& i_space, bool i_isDistanceValidator);
  CorvValidatorCfgLumScene(const CorvValidatorCfgLumScene& i_other);
  lmStatus init(const CorvValidatorCfgLumSceneWkPtr& i_weakPtr);

private:
  struct CInnerScene;
  class CTest;

  /// @return null, with a log entry, if the device's bodies cannot be tested.
  CInnerScene* updateInnerData(const CorvDevice& i_device) const;
  lmStatus rebuildInnerScene(const CorvDevice& i_device, CInnerScene& o_inner) const;
  /// Logs what a configuration cannot be checked for.
  static lmStatus refuse(const char* i_why);
  bool test(const CorvDevice& i_device, CInnerScene& io_inner, const CorvCollisionQuery& i_query,
            CorvValidationReportShPtr& o_report) const;
  static CorvReportCfgCollisionShPtr blankReport(CInnerScene& io_inner, const CorvCollisionQuery& i_query);
  static void fillReport(const CorvDevice& i_device, const CInnerScene& i_inner, const CorvCollisionQuery& i_query,
                         bool i_isTouching, bool i_isColliding, CorvReportCfgCollision& o_report);

  ClumSceneShPtr m_scene;
  mutable std::unique_ptr<CInnerScene> m_inner;
};
