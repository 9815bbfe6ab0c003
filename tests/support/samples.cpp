#include "support/samples.h"

#include "constraints/orvConstraintComposite.h"
#include "constraints/orvConstraintDofLock.h"
#include "constraints/orvConstraintLock.h"
#include "foundation/lumAutotuningParallelCooperativeOperation.h"
#include "foundation/lumBox.h"
#include "foundation/lumCapsule.h"
#include "foundation/lumCleanUpOperation.h"
#include "foundation/lumCone.h"
#include "foundation/lumConvex.h"
#include "foundation/lumCylinder.h"
#include "foundation/lumFCLCollisionToolkit.h"
#include "foundation/lumGeometryCollection.h"
#include "foundation/lumInstance.h"
#include "foundation/lumLoopOperation.h"
#include "foundation/lumMat4.h"
#include "foundation/lumMesh.h"
#include "foundation/lumMultithreadedParallelOperation.h"
#include "foundation/lumNotificator.h"
#include "foundation/lumParallelCooperativeOperation.h"
#include "foundation/lumProximityCollisionToolkit.h"
#include "foundation/lumScene.h"
#include "foundation/lumSequenceOperation.h"
#include "foundation/lumSphere.h"
#include "foundation/lumTestParameters.h"
#include "foundation/lumWeightedParallelCooperativeOperation.h"
#include "kinematics/orvBodyLumScene.h"
#include "kinematics/orvCSComposite.h"
#include "kinematics/orvCSDeviceWrapper.h"
#include "kinematics/orvCSGroup.h"
#include "kinematics/orvCSVoid.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvDevice.h"
#include "kinematics/orvDof.h"
#include "kinematics/orvJoint.h"
#include "kinematics/orvJointAnchor.h"
#include "kinematics/orvJointBallAndSocket.h"
#include "kinematics/orvJointDoubleRotation.h"
#include "kinematics/orvJointFreeFlyer.h"
#include "kinematics/orvJointPlan.h"
#include "kinematics/orvJointRotation.h"
#include "kinematics/orvJointTranslation.h"
#include "kinematics/orvKEAnchor.h"
#include "kinematics/orvKEEuclideanPath.h"
#include "kinematics/orvKEFreeFlyer.h"
#include "kinematics/orvKEPath.h"
#include "kinematics/orvKEPlan.h"
#include "kinematics/orvKERotate.h"
#include "kinematics/orvKERotateTaitBryant.h"
#include "kinematics/orvKERotateXY.h"
#include "kinematics/orvKETranslate.h"
#include "manifolds/orvManifoldUnion.h"
#include "manifolds/orvPointManifold.h"
#include "metrics/orvMetricAbsolute.h"
#include "metrics/orvMetricEuclidean.h"
#include "metrics/orvMetricIK.h"
#include "metrics/orvMetricIntrinsinc.h"
#include "metrics/orvMetricManhattan.h"
#include "metrics/orvMetricRevolute.h"
#include "metrics/orvMetricScale.h"
#include "metrics/orvMetricSlerpWithCustomMotionFrame.h"
#include "metrics/orvMetricZero.h"
#include "metrics/orvRDDiscrete.h"
#include "metrics/orvRDGaussian.h"
#include "metrics/orvRDUniform.h"
#include "metrics/orvRWComposite.h"
#include "metrics/orvRWFixedValue.h"
#include "metrics/orvRWIdentity.h"
#include "metrics/orvRWLinearDof.h"
#include "optimizers/orvAdaptiveShortcutOptimizer.h"
#include "optimizers/orvPathEvaluatorLength.h"
#include "optimizers/orvRandomOptimizer.h"
#include "optimizers/orvShortcutDirect.h"
#include "paths/orvDPComposite.h"
#include "paths/orvDPDubins.h"
#include "paths/orvDPLinear.h"
#include "paths/orvDPReedsNShepp.h"
#include "paths/orvDPRestriction.h"
#include "paths/orvDPSlerp.h"
#include "paths/orvDPTrapezoidal.h"
#include "paths/orvHybridPath.h"
#include "paths/orvPath.h"
#include "paths/orvSMComposite.h"
#include "paths/orvSMDubins.h"
#include "paths/orvSMLinear.h"
#include "paths/orvSMLinearWithDiscreteEnds.h"
#include "paths/orvSMManhattan.h"
#include "paths/orvSMReedsNShepp.h"
#include "paths/orvSMSequence.h"
#include "paths/orvSMSlerp.h"
#include "paths/orvSMTrapezoidal.h"
#include "paths/orvTrajectoryTrapezoidal.h"
#include "planners/orvBuilderPlanner.h"
#include "planners/orvIdentityPlanner.h"
#include "planners/orvPlannerOperation.h"
#include "roadmaps/orvEdge.h"
#include "roadmaps/orvExtendDirect.h"
#include "roadmaps/orvInjectionBuilder.h"
#include "roadmaps/orvLinkerKeepValidPart.h"
#include "roadmaps/orvLinkerStandard.h"
#include "roadmaps/orvMonoDiffusingBuilder.h"
#include "roadmaps/orvMultiDiffusingBuilder.h"
#include "roadmaps/orvNode.h"
#include "roadmaps/orvOperationAdapterBuilder.h"
#include "roadmaps/orvRatingShortestComponent.h"
#include "roadmaps/orvRoadmap.h"
#include "roadmaps/orvSamplingBuilder.h"
#include "roadmaps/orvShooterConfigSpace.h"
#include "roadmaps/orvShooterRoadmapBox.h"
#include "validation/orvReportCfgDof.h"
#include "validation/orvReportCollision.h"
#include "validation/orvReportPathCollision.h"
#include "validation/orvValidationReport.h"
#include "validation/orvValidatorCfg6DofSingularity.h"
#include "validation/orvValidatorCfgComposite.h"
#include "validation/orvValidatorCfgDof.h"
#include "validation/orvValidatorCfgLumScene.h"
#include "validation/orvValidatorDPCollision.h"
#include "validation/orvValidatorDPComposite.h"
#include "validation/orvValidatorDPMonotonic.h"
#include "validation/orvValidatorDPSampler.h"
#include "validation/orvValidatorDPTurnJump.h"
#include "validation/orvValidatorDofBounds.h"
#include "validation/orvValidatorPathCollision.h"
#include "validation/orvValidatorPathDirectPaths.h"
#include "validation/orvValidatorSet.h"

namespace
{
ClumOperationShPtr sampleOperation()
{
  return ClumSequenceOperation::create();
}

std::vector<ClumPoint3> samplePoints()
{
  return {ClumPoint3(0.0, 0.0, 0.0), ClumPoint3(1.0, 0.0, 0.0), ClumPoint3(0.0, 1.0, 0.0), ClumPoint3(0.0, 0.0, 1.0)};
}

/// A space that outlives the validators, which watch it weakly.
const CorvConfigSpaceShPtr& keptSpace()
{
  static const CorvConfigSpaceShPtr s_space = sampleSpace();
  return s_space;
}

CorvDirectPathShPtr sampleDirectPath()
{
  const CorvConfigSpaceShPtr space = sampleSpace();
  return space->steeringMethod()->makeDirectPath(CorvConfig(space, {0.0, 1.0}), CorvConfig(space, {2.0, -1.0}));
}

CorvDeviceShPtr sampleDevice()
{
  const CorvDeviceShPtr device = CorvDevice::create();
  const CorvJointShPtr base = CorvJointTranslation::create(ClumMat4(), ClumMat4::X_AXIS);
  base->addJoint(CorvJointRotation::create(ClumVect3(1.0, 0.0, 0.0), ClumVect3(0.0, 0.0, 1.0), ClumMat4::Z_AXIS));
  device->rootJoint(base);
  return device;
}

/// A device and a roadmap that outlive the objects that refer to them from outside.
const CorvDeviceShPtr& keptDevice()
{
  static const CorvDeviceShPtr s_device = sampleDevice();
  return s_device;
}

const CorvRoadmapShPtr& keptRoadmap()
{
  static const CorvRoadmapShPtr s_roadmap = CorvRoadmap::create(keptSpace());
  return s_roadmap;
}

CorvDPRestrictionShPtr sampleRestriction()
{
  const CorvDirectPathShPtr whole = sampleDirectPath();
  return CorvDPRestriction::create(whole, whole->configSpace()->subspace(0));
}

CorvDirectPathShPtr sampleCompositeDirectPath()
{
  const CorvConfigSpaceShPtr space = sampleSpace();
  return CorvSMComposite::create()->makeDirectPath(CorvConfig(space, {0.0, 1.0}), CorvConfig(space, {2.0, -1.0}));
}

CorvDirectPathShPtr sampleSequenceDirectPath()
{
  const CorvConfigSpaceShPtr space = sampleSpace();
  return CorvSMSequence::create()->makeDirectPath(CorvConfig(space, {0.0, 1.0}), CorvConfig(space, {2.0, -1.0}));
}

CorvDirectPathShPtr sampleManhattanDirectPath()
{
  const CorvConfigSpaceShPtr space = sampleDevice()->configSpace();
  return CorvSMManhattan::create()->makeDirectPath(CorvConfig(space, {0.0, 1.0}), CorvConfig(space, {2.0, -1.0}));
}

CorvPointManifoldShPtr samplePointManifold()
{
  const CorvConfigSpaceShPtr space = sampleSpace();
  return CorvPointManifold::create(CorvConfig(space, {3.0, 4.0}), space);
}

/// A car of three dofs, steered by the method of a kind.
template <class METHOD>
CorvDirectPathShPtr sampleCurve()
{
  const CorvConfigSpaceShPtr space = CorvKEPlan::create()->configSpace();
  return METHOD::create(0.5, space->dof(0), space->dof(1), space->dof(2))
    ->makeDirectPath(CorvConfig(space, {0.0, 0.0, 0.0}), CorvConfig(space, {2.0, 1.0, 1.5}));
}

CorvDirectPathShPtr sampleSlerp()
{
  const CorvConfigSpaceShPtr space = CorvKEFreeFlyer::create()->configSpace();
  return CorvSMSlerp::create()->makeDirectPath(CorvConfig(space, {0.0, 0.0, 0.0, 0.1, 0.2, 0.3}),
                                               CorvConfig(space, {1.0, 2.0, 0.0, 1.0, -0.5, 0.7}));
}

CorvDirectPathShPtr sampleTrapezoid()
{
  const CorvConfigSpaceShPtr space = sampleSpace();
  return CorvSMTrapezoidal::create({1.0, 1.0}, {2.0, 2.0})
    ->makeDirectPath(CorvConfig(space, {0.0, 1.0}), CorvConfig(space, {2.0, -1.0}));
}

CorvHybridPathShPtr sampleHybridPath()
{
  const CorvPathShPtr path = CorvPath::createWithDirectPath(sampleDirectPath());
  const CorvHybridPathShPtr hybrid = CorvHybridPath::create(path->configSpace());
  hybrid->appendPath(path);
  return hybrid;
}

std::vector<ClumMat4> sampleFrames()
{
  ClumMat4 second, third;
  second.translate(1.0, 0.0, 0.0);
  third.rotate(0.0, 0.0, 1.0, 1.0);
  return {ClumMat4(), second, third};
}
} // namespace

std::vector<ClumCodableShPtr> sampleSurroundings()
{
  return {keptSpace(), keptDevice()};
}

CorvConfigSpaceShPtr sampleSpace()
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("test.space");
  for (int i = 0; i < 2; ++i)
  {
    const CorvDofShPtr dof = CorvDof::create(false);
    dof->boundWithin(-10.0, 10.0);
    space->appendSubspace(dof);
  }
  space->steeringMethod(CorvSMLinear::create());
  return space;
}

#define SAMPLE(CLASS_NAME, ...)                                                                                        \
  {                                                                                                                    \
#CLASS_NAME, []() -> ClumCodableShPtr { return __VA_ARGS__; }                                                      \
  }

const std::vector<SampleMaker>& sampleMakers()
{
  // clang-format off
  static const std::vector<SampleMaker> s_makers = {
    SAMPLE(ClumAttemptOperation, ClumAttemptOperation::create(sampleOperation(), 3)),
    SAMPLE(ClumAutotuningParallelCooperativeOperation, ClumAutotuningParallelCooperativeOperation::create(ClumNotificator::create(), 1)),
    SAMPLE(ClumBox, ClumBox::create(1.0, 2.0, 3.0)),
    SAMPLE(ClumCapsule, ClumCapsule::create(0.5, 2.0)),
    SAMPLE(ClumCleanUpOperation, ClumCleanUpOperation::create(sampleOperation(), sampleOperation())),
    SAMPLE(ClumCone, ClumCone::create(0.5, 2.0)),
    SAMPLE(ClumConvex, ClumConvex::create(samplePoints())),
    SAMPLE(ClumCylinder, ClumCylinder::create(0.5, 2.0)),
    SAMPLE(ClumFCLCollisionToolkit, ClumFCLCollisionToolkit::create()),
    SAMPLE(ClumGeometryCollection, ClumGeometryCollection::create()),
    SAMPLE(ClumInstance, ClumInstance::create(ClumBox::create(1.0, 1.0, 1.0))),
    SAMPLE(ClumLoopOperation, ClumLoopOperation::create(sampleOperation(), 3)),
    SAMPLE(ClumMesh, ClumMesh::create(samplePoints(), {{0, 1, 2}, {0, 2, 3}, {0, 3, 1}})),
    SAMPLE(ClumMultithreadedParallelOperation, ClumMultithreadedParallelOperation::create()),
    SAMPLE(ClumParallelCooperativeOperation, ClumParallelCooperativeOperation::create()),
    SAMPLE(ClumProximityCollisionToolkit, ClumProximityCollisionToolkit::create()),
    SAMPLE(ClumScene, ClumScene::create()),
    SAMPLE(ClumSequenceOperation, ClumSequenceOperation::create()),
    SAMPLE(ClumSphere, ClumSphere::create(1.5)),
    SAMPLE(ClumTestParameters, ClumTestParameters::create()),
    SAMPLE(ClumWeightedParallelCooperativeOperation, ClumWeightedParallelCooperativeOperation::create()),
    SAMPLE(CorvAdaptiveShortcutOptimizer, CorvAdaptiveShortcutOptimizer::create()),
    SAMPLE(CorvBodyLumScene, CorvBodyLumScene::create()),
    SAMPLE(CorvBuilderPlanner, CorvBuilderPlanner::create(CorvMonoDiffusingBuilder::create(keptRoadmap()))),
    SAMPLE(CorvCSComposite, sampleSpace()),
    SAMPLE(CorvCSDeviceWrapper, sampleDevice()->configSpace()),
    SAMPLE(CorvCSGroup, CorvCSGroup::create("test.group")),
    SAMPLE(CorvCSVoid, CorvCSVoid::create()),
    SAMPLE(CorvConstraintComposite, CorvConstraintComposite::create(keptSpace())),
    SAMPLE(CorvConstraintDofLock, CorvConstraintDofLock::create(keptSpace()->dof(0), 0.5)),
    SAMPLE(CorvConstraintLock, CorvConstraintLock::create(keptSpace())),
    SAMPLE(CorvDPComposite, sampleCompositeDirectPath()),
    SAMPLE(CorvDPDubins, sampleCurve<CorvSMDubins>()),
    SAMPLE(CorvDPLinear, sampleDirectPath()),
    SAMPLE(CorvDPManhattan, sampleManhattanDirectPath()),
    SAMPLE(CorvDPReedsNShepp, sampleCurve<CorvSMReedsNShepp>()),
    SAMPLE(CorvDPRestriction, sampleRestriction()),
    SAMPLE(CorvDPSequence, sampleSequenceDirectPath()),
    SAMPLE(CorvDPSlerp, sampleSlerp()),
    SAMPLE(CorvDPTrapezoidal, sampleTrapezoid()),
    SAMPLE(CorvDevice, sampleDevice()),
    SAMPLE(CorvDof, CorvDof::create(true)),
    SAMPLE(CorvEdgeFactory, CorvEdgeFactory::create()),
    SAMPLE(CorvExtendDirect, CorvExtendDirect::create()),
    SAMPLE(CorvHybridPath, sampleHybridPath()),
    SAMPLE(CorvIdentityPlanner, CorvIdentityPlanner::create()),
    SAMPLE(CorvInjectionBuilder, CorvInjectionBuilder::create(keptRoadmap())),
    SAMPLE(CorvJoint, CorvJoint::create(CorvKEPlan::create(), ClumMat4())),
    SAMPLE(CorvJointAnchor, CorvJointAnchor::create()),
    SAMPLE(CorvJointBallAndSocket, CorvJointBallAndSocket::create(ClumMat4())),
    SAMPLE(CorvJointDoubleRotation, CorvJointDoubleRotation::create(ClumMat4())),
    SAMPLE(CorvJointFreeFlyer, CorvJointFreeFlyer::create(ClumMat4())),
    SAMPLE(CorvJointPlan, CorvJointPlan::create(ClumMat4())),
    SAMPLE(CorvJointRotation, CorvJointRotation::create(ClumMat4(), ClumMat4::Y_AXIS)),
    SAMPLE(CorvJointTranslation, CorvJointTranslation::create(ClumMat4(), ClumMat4::Z_AXIS)),
    SAMPLE(CorvKEAnchor, CorvKEAnchor::create()),
    SAMPLE(CorvKEEuclideanPath, CorvKEEuclideanPath::create(sampleFrames())),
    SAMPLE(CorvKEFreeFlyer, CorvKEFreeFlyer::create()),
    SAMPLE(CorvKEPath, CorvKEPath::create(CorvPath::createWithDirectPath(sampleDirectPath()), CorvJointConstShPtr(), CorvDeviceConstShPtr())),
    SAMPLE(CorvKEPathMetric, CorvKEPathMetric::create(2.0)),
    SAMPLE(CorvKEPlan, CorvKEPlan::create()),
    SAMPLE(CorvKERotateInverseX, CorvKERotateInverseX::create()),
    SAMPLE(CorvKERotateInverseY, CorvKERotateInverseY::create()),
    SAMPLE(CorvKERotateInverseZ, CorvKERotateInverseZ::create()),
    SAMPLE(CorvKERotateTaitBryant, CorvKERotateTaitBryant::create()),
    SAMPLE(CorvKERotateX, CorvKERotateX::create()),
    SAMPLE(CorvKERotateXY, CorvKERotateXY::create()),
    SAMPLE(CorvKERotateY, CorvKERotateY::create()),
    SAMPLE(CorvKERotateZ, CorvKERotateZ::create()),
    SAMPLE(CorvKETranslateInverseX, CorvKETranslateInverseX::create()),
    SAMPLE(CorvKETranslateInverseY, CorvKETranslateInverseY::create()),
    SAMPLE(CorvKETranslateInverseZ, CorvKETranslateInverseZ::create()),
    SAMPLE(CorvKETranslateX, CorvKETranslateX::create()),
    SAMPLE(CorvKETranslateY, CorvKETranslateY::create()),
    SAMPLE(CorvKETranslateZ, CorvKETranslateZ::create()),
    SAMPLE(CorvLinkerKeepValidPart, CorvLinkerKeepValidPart::create()),
    SAMPLE(CorvLinkerStandard, CorvLinkerStandard::create()),
    SAMPLE(CorvManifoldUnion, CorvManifoldUnion::create(sampleSpace())),
    SAMPLE(CorvMetricAbsolute, CorvMetricAbsolute::create()),
    SAMPLE(CorvMetricEuclidean, CorvMetricEuclidean::create()),
    SAMPLE(CorvMetricIK, CorvMetricIK::create(CorvDof::create(false), CorvDof::create(false))),
    SAMPLE(CorvMetricIntrinsinc, CorvMetricIntrinsinc::create()),
    SAMPLE(CorvMetricManhattan, CorvMetricManhattan::create()),
    SAMPLE(CorvMetricRevolute, CorvMetricRevolute::create()),
    SAMPLE(CorvMetricScale, CorvMetricScale::create(CorvMetricAbsolute::create())),
    SAMPLE(CorvMetricSlerpWithCustomMotionFrame, CorvMetricSlerpWithCustomMotionFrame::create(CorvJointFreeFlyer::create(ClumMat4()))),
    SAMPLE(CorvMetricZero, CorvMetricZero::create()),
    SAMPLE(CorvMonoDiffusingBuilder, CorvMonoDiffusingBuilder::create(keptRoadmap())),
    SAMPLE(CorvMultiDiffusingBuilder, CorvMultiDiffusingBuilder::create(keptRoadmap())),
    SAMPLE(CorvNodeFactory, CorvNodeFactory::create()),
    SAMPLE(CorvOperationAdapterBuilder, CorvOperationAdapterBuilder::create(keptRoadmap(), sampleOperation())),
    SAMPLE(CorvPath, CorvPath::createWithDirectPath(sampleDirectPath())),
    SAMPLE(CorvPathEvaluatorLength, CorvPathEvaluatorLength::create(0.25)),
    SAMPLE(CorvPlannerLoopOperation, CorvPlannerLoopOperation::create(CorvPlannerOperation::create(CorvIdentityPlanner::create()), 2)),
    SAMPLE(CorvPlannerOperation, CorvPlannerOperation::create(CorvIdentityPlanner::create())),
    SAMPLE(CorvPointManifold, samplePointManifold()),
    SAMPLE(CorvRDDiscrete, boost::const_pointer_cast<CorvRDDiscrete>(CorvRDDiscrete::create())),
    SAMPLE(CorvRDGaussian, boost::const_pointer_cast<CorvRDGaussian>(CorvRDGaussian::create())),
    SAMPLE(CorvRDUniform, boost::const_pointer_cast<CorvRDUniform>(CorvRDUniform::create())),
    SAMPLE(CorvRWComposite, boost::const_pointer_cast<CorvRWComposite>(CorvRWComposite::create())),
    SAMPLE(CorvRWFixedValue, boost::const_pointer_cast<CorvRWFixedValue>(CorvRWFixedValue::create(2.0))),
    SAMPLE(CorvRWIdentity, boost::const_pointer_cast<CorvRWIdentity>(CorvRWIdentity::create())),
    SAMPLE(CorvRWLinearDof, boost::const_pointer_cast<CorvRWLinearDof>(CorvRWLinearDof::create())),
    SAMPLE(CorvRandomOptimizer, CorvRandomOptimizer::create()),
    SAMPLE(CorvRatingShortestComponent, CorvRatingShortestComponent::create()),
    SAMPLE(CorvReportCfgDof, CorvReportCfgDof::create()),
    SAMPLE(CorvReportCollision, CorvReportCollision::create()),
    SAMPLE(CorvReportPathCollision, CorvReportPathCollision::create()),
    SAMPLE(CorvSMComposite, CorvSMComposite::create()),
    SAMPLE(CorvSMDubins, CorvSMDubins::create(1.0, CorvDof::create(false), CorvDof::create(false), CorvDof::create(true))),
    SAMPLE(CorvSMLinear, CorvSMLinear::create(true)),
    SAMPLE(CorvSMLinearWithDiscreteEnds, CorvSMLinearWithDiscreteEnds::create(0.5, 0.25)),
    SAMPLE(CorvSMManhattan, CorvSMManhattan::create()),
    SAMPLE(CorvSMReedsNShepp, CorvSMReedsNShepp::create(1.0, CorvDof::create(false), CorvDof::create(false), CorvDof::create(true))),
    SAMPLE(CorvSMSequence, CorvSMSequence::create()),
    SAMPLE(CorvSMSlerp, CorvSMSlerp::create()),
    SAMPLE(CorvSMTrapezoidal, CorvSMTrapezoidal::create({1.0}, {2.0})),
    SAMPLE(CorvSamplingBuilder, CorvSamplingBuilder::create(keptRoadmap())),
    SAMPLE(CorvShooterConfigSpace, CorvShooterConfigSpace::create()),
    SAMPLE(CorvShooterRoadmapBox, CorvShooterRoadmapBox::create()),
    SAMPLE(CorvShortcutDirect, CorvShortcutDirect::create()),
    SAMPLE(CorvTrajectoryTrapezoidal, CorvTrajectoryTrapezoidal::create(CorvPath::createWithDirectPath(sampleTrapezoid()))),
    SAMPLE(CorvValidationReport, CorvValidationReport::create()),
    SAMPLE(CorvValidatorCfg6DofSingularity, CorvValidatorCfg6DofSingularity::create(keptSpace(), 1u, 0.1, 2.0, 0.3)),
    SAMPLE(CorvValidatorCfgBounds, CorvValidatorCfgBounds::create(keptSpace())),
    SAMPLE(CorvValidatorCfgComposite, CorvValidatorCfgComposite::create(keptSpace())),
    SAMPLE(CorvValidatorCfgLock, CorvValidatorCfgLock::create(keptSpace())),
    SAMPLE(CorvValidatorCfgLumScene, CorvValidatorCfgLumScene::create(keptDevice()->internalConfigSpace())),
    SAMPLE(CorvValidatorDPCollision, CorvValidatorDPCollision::create(keptSpace(), CorvValidatorCfgBounds::create(keptSpace()), 0.5)),
    SAMPLE(CorvValidatorDPComposite, CorvValidatorDPComposite::create(keptSpace())),
    SAMPLE(CorvValidatorDPMonotonic,
           CorvValidatorDPMonotonic::create(keptSpace(), 1, CorvValidatorDPMonotonic::NOT_DECREASING)),
    SAMPLE(CorvValidatorDPSampler, CorvValidatorDPSampler::create(keptSpace(), CorvValidatorConstShPtr(), 0.5)),
    SAMPLE(CorvValidatorDPTurnJump, CorvValidatorDPTurnJump::create(keptSpace())),
    SAMPLE(CorvValidatorDofBounds, CorvValidatorDofBounds::create(keptSpace()->dof(0), -1.0, 2.0)),
    SAMPLE(CorvValidatorPathCollision, CorvValidatorPathCollision::create(keptSpace(), 0.25)),
    SAMPLE(CorvValidatorPathDirectPaths, CorvValidatorPathDirectPaths::create(keptSpace())),
    SAMPLE(CorvValidatorSet, CorvValidatorSet::create(keptSpace())),
  };
  // clang-format on
  return s_makers;
}
