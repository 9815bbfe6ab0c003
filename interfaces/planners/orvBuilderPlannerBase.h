#pragma once

#include "manifolds/handles.h"
#include "planners/orvPathPlanner.h"
#include "roadmaps/handles.h"

#include <string>
#include <vector>

/// Makes a planner of a roadmap builder: steps it until a start node of the roadmap reaches a goal node, and reads the
/// path out.
///
/// Starts and goals are manifolds; a stable start or end of the input path replaces them by its configuration. While a
/// plan runs, each node of the roadmap that is an element of one is a start (goal) node; between plans there are none,
/// but manifolds and roadmap stay, so that a second plan finds an existing solution at once.
///
/// A failed plan gives, unless the parameter says otherwise, the best path bridged over the gap, which is not valid;
/// its status stays a failure.
class LUM_API CorvBuilderPlannerBase : public CorvPathPlanner
{
  LUM_ABSTRACT(CorvBuilderPlannerBase, CorvPathPlanner);

public:
  static const unsigned int DID_ADD_START_NODE;
  static const unsigned int DID_REMOVE_START_NODE;
  static const unsigned int DID_CLEAR_START_NODES;
  static const unsigned int DID_ADD_GOAL_NODE;
  static const unsigned int DID_REMOVE_GOAL_NODE;
  static const unsigned int DID_CLEAR_GOAL_NODES;
  /// The key under which the notifications carry their node.
  static const std::string NODE_KEY;

  ~CorvBuilderPlannerBase() override;
  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

  virtual CorvBuilderShPtr builder() const = 0;
  /// The path over the shortest gap between a start node and a goal node; without a gap, the path.
  /// @return -1 without a start or a goal node.
  virtual lmStatus forcePath(CorvPathShPtr& io_path) const;

  /// Add a configuration as a point manifold.
  lmStatus addStartConfiguration(const CorvConfig& i_config);
  lmStatus addGoalConfiguration(const CorvConfig& i_config);
  /// @return -1 for null, a member or another space; while planning with a stable start (end), with a warning, also for
  /// a manifold whose nearest point is not equivalent to it.
  lmStatus addStartManifold(const CorvManifoldConstShPtr& i_manifold);
  lmStatus addGoalManifold(const CorvManifoldConstShPtr& i_manifold);
  /// The point manifolds among the starts (goals).
  unsigned int countStartConfigurations() const;
  unsigned int countGoalConfigurations() const;
  /// @return a configuration without a space, with an assertion in the log, out of range.
  CorvConfig startConfiguration(unsigned int i_rank) const;
  CorvConfig goalConfiguration(unsigned int i_rank) const;
  void resetStartConfigurations();
  void resetGoalConfigurations();
  const CorvManifoldUnionShPtr& startManifold() const { return m_startManifold; }
  const CorvManifoldUnionShPtr& goalManifold() const { return m_goalManifold; }

  unsigned int countCurrentStartNodes() const { return static_cast<unsigned int>(m_currentStartNodes.size()); }
  unsigned int countCurrentGoalNodes() const { return static_cast<unsigned int>(m_currentGoalNodes.size()); }
  /// @return null out of range or if the node is gone.
  CorvNodeShPtr currentStartNode(unsigned int i_rank) const;
  CorvNodeShPtr currentGoalNode(unsigned int i_rank) const;
  void clearStartNodes();
  void clearGoalNodes();
  void clearStartAndGoalNodes();

  /// True if a start node reaches a goal node; gives the first such pair.
  bool isProblemSolved() const;
  bool isProblemSolved(CorvNodeShPtr& o_start, CorvNodeShPtr& o_goal) const;

protected:
  CorvBuilderPlannerBase() = default;
  CorvBuilderPlannerBase(const CorvBuilderPlannerBase& i_other);
  /// Makes the empty start and goal manifolds. @pre `builder()` gives the builder.
  lmStatus init(const CorvBuilderPlannerBaseWkPtr& i_weakPtr);

  lmStatus doStartPlan() override;
  lmStatus doContinuePlan(CorvPathShPtr& io_path, bool& o_shouldContinue) override;
  lmStatus doFinishPlan(const lmStatus& i_status, CorvPathShPtr& io_path) override;
  lmStatus doComputeCompletion(double& o_completion) const override;

  CorvRoadmapShPtr roadmap() const;
  /// Enters a node as start and goal node if it is an element of the manifold.
  void checkNode(const CorvNodeShPtr& i_node);
  void recheckAllNodes();
  void addStartNode(const CorvNodeShPtr& i_node);
  void addGoalNode(const CorvNodeShPtr& i_node);
  void removeStartNode(const CorvNodeShPtr& i_node);
  void removeGoalNode(const CorvNodeShPtr& i_node);

private:
  using TNodes = std::vector<CorvNodeWkPtr>;

  bool canStartPlan() const;
  void takeStableEnds();
  void linkStableEnds();
  ClumParameterMapConstShPtr makeBuilderParameters() const;
  void watchRoadmap();
  void unwatchRoadmap();
  void roadmapDidAddNode(const ShPtr<const ClumNotification>& i_notification);
  void roadmapDidRemoveNode(const ShPtr<const ClumNotification>& i_notification);
  void roadmapDidRemoveAllNodes(const ShPtr<const ClumNotification>& i_notification);
  lmStatus addManifold(const CorvManifoldUnionShPtr& i_union, const CorvManifoldConstShPtr& i_manifold);
  bool isElementOf(const CorvManifoldUnion& i_manifold, const CorvConfig& i_config) const;
  void dropGoneNodes();
  void stopBuilder();
  void notifyNode(unsigned int i_id, const CorvNodeShPtr& i_node) const;

  CorvManifoldUnionShPtr m_startManifold;
  CorvManifoldUnionShPtr m_goalManifold;
  TNodes m_currentStartNodes;
  TNodes m_currentGoalNodes;
  ClumNotificatorShPtr m_watched; ///< the roadmap's notificator while a plan runs
};
