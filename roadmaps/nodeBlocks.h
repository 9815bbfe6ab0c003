#pragma once

#include "metrics/orvFlatMetric.h"
#include "roadmaps/orvNode.h"

#include <cstddef>
#include <vector>

/// Nodes as points in blocks, found by nearness: a binary tree of boxes whose leaves are blocks of a few points.
///
/// A query goes to the nearer of two boxes first and passes over a box that has no point as near as the best so far.
/// What boxes and points are at distance is told by a flat form, whose bounds are never above the distances that it
/// gives; so the answer is that of a scan, whatever the shape of the tree. A full block is cut in two across its
/// longest side; a part of the tree that has become lopsided, as where a roadmap grows one way, is built anew.
///
/// The nodes are known by address: whoever enters them keeps them. One thread at a time.
class CorvNodeBlocks
{
public:
  /// @param i_form must be able to measure blocks.
  explicit CorvNodeBlocks(const CorvFlatForm& i_form) : m_form(i_form) {}

  const CorvFlatForm& form() const { return m_form; }
  /// @param i_point of the node, all numbers finite.
  void insert(const CorvNode& i_node, const double* i_point);
  /// The nearest node among those not farther than the bound, of several the one made first; null if there is none.
  const CorvNode* nearest(const double* i_point, double i_bound) const;
  std::size_t allocatedBytes() const;

private:
  static constexpr unsigned int SIZE = CorvFlatForm::BLOCK_SIZE;

  /// Two parts of the tree. A point that comes in goes to the first if its number at `place` is below `cut`.
  struct CPair
  {
    double cut;
    unsigned int place;
    int child[2];          ///< a pair, or a block's complement
    unsigned int count[2]; ///< of points
  };

  /// A place in the tree for a pair or a block. The root hangs in the first slot of the first pair.
  struct CSlot
  {
    unsigned int pair;
    unsigned int side;
  };

  struct CPending
  {
    double bound;
    CSlot slot;
  };

  struct CBest
  {
    const CorvNode* node;
    double squared;
    double limit; ///< nothing farther is wanted
  };

  int childOf(const CSlot& i_slot) const { return m_pairs[i_slot.pair].child[i_slot.side]; }
  double* boxesOf(std::size_t i_pair) { return &m_boxes[i_pair * BOXES_SIZE * m_form.pointSize()]; }
  const double* boxesOf(std::size_t i_pair) const { return &m_boxes[i_pair * BOXES_SIZE * m_form.pointSize()]; }
  double* pointsOf(std::size_t i_block) { return &m_points[i_block * SIZE * m_form.pointSize()]; }
  const double* pointsOf(std::size_t i_block) const { return &m_points[i_block * SIZE * m_form.pointSize()]; }

  unsigned int takePair();
  unsigned int takeBlock();
  void widen(const CSlot& i_slot, const double* i_point);
  void put(std::size_t i_block, unsigned int i_rank, const CorvNode* i_node, const double* i_point);
  void rebuild(const CSlot& i_slot, const CorvNode& i_node, const double* i_point);
  void loosen(int i_child, unsigned int i_count);
  void hang(const CSlot& i_slot, unsigned int* i_begin, unsigned int* i_end);
  void boundLoose(const unsigned int* i_begin, const unsigned int* i_end, double* o_box) const;
  void descend(const double* i_point, CSlot i_slot, CBest& io_best) const;
  void measure(const double* i_point, const CSlot& i_slot, CBest& io_best) const;

  static constexpr unsigned int BOXES_SIZE = CorvFlatForm::BOXES_SIZE;

  CorvFlatForm m_form;
  std::vector<CPair> m_pairs;
  std::vector<double> m_boxes;           ///< of the pairs, see `CorvFlatForm::squaredDistancesToBoxes`
  std::vector<double> m_points;          ///< of the blocks, see `CorvFlatForm::squaredDistancesOfBlock`
  std::vector<const CorvNode*> m_nodes;  ///< of the blocks
  std::vector<unsigned int> m_freePairs; ///< left by rebuilding
  std::vector<unsigned int> m_freeBlocks;

  // Scratch of a rebuilding and of a query.
  std::vector<const CorvNode*> m_looseNodes;
  std::vector<double> m_loosePoints;
  std::vector<unsigned int> m_looseOrder;
  mutable std::vector<CPending> m_pending;
};
