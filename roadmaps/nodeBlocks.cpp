#include "roadmaps/nodeBlocks.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

namespace
{
constexpr int NO_CHILD = std::numeric_limits<int>::min();

/// Blocks are filled to three quarters when a part of the tree is built, so that the next few points find room.
constexpr unsigned int FULL_ENOUGH = CorvFlatForm::BLOCK_SIZE / 4 * 3;

bool isLopsided(unsigned int i_count, unsigned int i_countOfBoth)
{
  return i_count > i_countOfBoth / 4 * 3 + CorvFlatForm::BLOCK_SIZE;
}

/// Makes room at the end, a quarter more than is needed: doubling would cost too much memory.
template <class T>
void extend(std::vector<T>& io_numbers, std::size_t i_count)
{
  const std::size_t size = io_numbers.size() + i_count;
  if (size > io_numbers.capacity())
    io_numbers.reserve(size + size / 4);
  io_numbers.resize(size);
}
} // namespace

void CorvNodeBlocks::insert(const CorvNode& i_node, const double* i_point)
{
  CSlot slot = {0, 0};
  if (m_pairs.empty())
    slot.pair = takePair();
  widen(slot, i_point);
  while (childOf(slot) >= 0)
  {
    const unsigned int child = static_cast<unsigned int>(childOf(slot));
    const CPair& pair = m_pairs[child];
    const unsigned int side = i_point[pair.place] < pair.cut ? 0 : 1;
    if (isLopsided(pair.count[side] + 1, pair.count[0] + pair.count[1] + 1))
      break;
    slot = CSlot{child, side};
    widen(slot, i_point);
  }
  const unsigned int count = m_pairs[slot.pair].count[slot.side];
  if (childOf(slot) >= 0 || childOf(slot) == NO_CHILD || count > SIZE)
    rebuild(slot, i_node, i_point);
  else
    put(static_cast<std::size_t>(~childOf(slot)), count - 1, &i_node, i_point);
}

/// Counts a point in and has the box hold it.
void CorvNodeBlocks::widen(const CSlot& i_slot, const double* i_point)
{
  ++m_pairs[i_slot.pair].count[i_slot.side];
  double* low = boxesOf(i_slot.pair) + i_slot.side;
  for (unsigned int k = 0; k < m_form.pointSize(); ++k, low += BOXES_SIZE)
  {
    low[0] = std::min(low[0], i_point[k]);
    low[2] = std::max(low[2], i_point[k]);
  }
}

void CorvNodeBlocks::put(std::size_t i_block, unsigned int i_rank, const CorvNode* i_node, const double* i_point)
{
  double* number = pointsOf(i_block) + i_rank;
  for (unsigned int k = 0; k < m_form.pointSize(); ++k, number += SIZE)
    *number = i_point[k];
  m_nodes[i_block * SIZE + i_rank] = i_node;
}

unsigned int CorvNodeBlocks::takePair()
{
  if (m_freePairs.empty())
  {
    m_freePairs.push_back(static_cast<unsigned int>(m_pairs.size()));
    extend(m_pairs, 1);
    m_pairs.back() = CPair{0.0, 0, {NO_CHILD, NO_CHILD}, {0, 0}};
    extend(m_boxes, std::size_t(BOXES_SIZE) * m_form.pointSize());
  }
  const unsigned int pair = m_freePairs.back();
  m_freePairs.pop_back();
  return pair;
}

unsigned int CorvNodeBlocks::takeBlock()
{
  if (m_freeBlocks.empty())
  {
    m_freeBlocks.push_back(static_cast<unsigned int>(m_nodes.size() / SIZE));
    extend(m_nodes, SIZE);
    extend(m_points, std::size_t(SIZE) * m_form.pointSize());
  }
  const unsigned int block = m_freeBlocks.back();
  m_freeBlocks.pop_back();
  return block;
}

/// Builds what hangs in a slot anew, with one more node, which is counted in already.
void CorvNodeBlocks::rebuild(const CSlot& i_slot, const CorvNode& i_node, const double* i_point)
{
  m_looseNodes.assign(1, &i_node);
  m_loosePoints.assign(i_point, i_point + m_form.pointSize());
  const unsigned int count = m_pairs[i_slot.pair].count[i_slot.side];
  if (childOf(i_slot) != NO_CHILD)
    loosen(childOf(i_slot), count - 1);
  m_looseOrder.resize(m_looseNodes.size());
  std::iota(m_looseOrder.begin(), m_looseOrder.end(), 0u);
  hang(i_slot, m_looseOrder.data(), m_looseOrder.data() + m_looseOrder.size());
}

/// Takes a part of the tree to pieces.
void CorvNodeBlocks::loosen(int i_child, unsigned int i_count)
{
  if (i_child >= 0)
  {
    const CPair& pair = m_pairs[i_child];
    loosen(pair.child[0], pair.count[0]);
    loosen(pair.child[1], pair.count[1]);
    m_freePairs.push_back(static_cast<unsigned int>(i_child));
    return;
  }
  const unsigned int block = static_cast<unsigned int>(~i_child);
  const double* numbers = pointsOf(block);
  for (unsigned int i = 0; i < i_count; ++i)
  {
    m_looseNodes.push_back(m_nodes[block * SIZE + i]);
    for (unsigned int k = 0; k < m_form.pointSize(); ++k)
      m_loosePoints.push_back(numbers[k * SIZE + i]);
  }
  m_freeBlocks.push_back(block);
}

/// Hangs some of the loose nodes in a slot: a block, or two halves on either side of the middle of the longest side.
void CorvNodeBlocks::hang(const CSlot& i_slot, unsigned int* i_begin, unsigned int* i_end)
{
  const unsigned int size = m_form.pointSize();
  const unsigned int count = static_cast<unsigned int>(i_end - i_begin);
  m_pairs[i_slot.pair].count[i_slot.side] = count;
  boundLoose(i_begin, i_end, boxesOf(i_slot.pair) + i_slot.side);
  if (count <= FULL_ENOUGH)
  {
    const unsigned int block = takeBlock();
    m_pairs[i_slot.pair].child[i_slot.side] = ~static_cast<int>(block);
    for (unsigned int i = 0; i < count; ++i)
      put(block, i, m_looseNodes[i_begin[i]], &m_loosePoints[std::size_t(i_begin[i]) * size]);
    return;
  }
  const unsigned int place = m_form.longestSide(boxesOf(i_slot.pair) + i_slot.side);
  const double* const numbers = &m_loosePoints[place];
  unsigned int* const middle = i_begin + count / 2;
  std::nth_element(i_begin, middle, i_end,
                   [=](unsigned int a, unsigned int b) { return numbers[a * size] < numbers[b * size]; });
  const unsigned int pair = takePair();
  m_pairs[pair].place = place;
  m_pairs[pair].cut = numbers[*middle * size];
  m_pairs[i_slot.pair].child[i_slot.side] = static_cast<int>(pair);
  hang(CSlot{pair, 0}, i_begin, middle);
  hang(CSlot{pair, 1}, middle, i_end);
}

/// @param o_box of one of a pair's two.
void CorvNodeBlocks::boundLoose(const unsigned int* i_begin, const unsigned int* i_end, double* o_box) const
{
  const unsigned int size = m_form.pointSize();
  for (unsigned int k = 0; k < size; ++k, o_box += BOXES_SIZE)
  {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const unsigned int* at = i_begin; at != i_end; ++at)
    {
      const double number = m_loosePoints[std::size_t(*at) * size + k];
      low = std::min(low, number);
      high = std::max(high, number);
    }
    o_box[0] = low;
    o_box[2] = high;
  }
}

const CorvNode* CorvNodeBlocks::nearest(const double* i_point, double i_bound) const
{
  if (m_pairs.empty())
    return nullptr;
  // The bound has some room for rounding: its square is not what the measured squares are compared with in the end.
  CBest best = {nullptr, std::numeric_limits<double>::infinity(), i_bound * i_bound * (1.0 + 1e-9)};
  m_pending.assign(1, CPending{0.0, CSlot{0, 0}});
  while (!m_pending.empty())
  {
    const CPending pending = m_pending.back();
    m_pending.pop_back();
    if (!(pending.bound > best.limit))
      descend(i_point, pending.slot, best);
  }
  return best.node && std::sqrt(best.squared) <= i_bound ? best.node : nullptr;
}

/// Goes down to the nearest block of a part of the tree and measures it; what is passed on the way has to wait.
void CorvNodeBlocks::descend(const double* i_point, CSlot i_slot, CBest& io_best) const
{
  while (childOf(i_slot) >= 0)
  {
    const unsigned int child = static_cast<unsigned int>(childOf(i_slot));
    double squared[2];
    m_form.squaredDistancesToBoxes(i_point, boxesOf(child), squared);
    const unsigned int nearer = squared[1] < squared[0] ? 1 : 0;
    if (!(squared[1 - nearer] > io_best.limit))
      m_pending.push_back(CPending{squared[1 - nearer], CSlot{child, 1 - nearer}});
    if (squared[nearer] > io_best.limit)
      return;
    i_slot = CSlot{child, nearer};
  }
  measure(i_point, i_slot, io_best);
}

void CorvNodeBlocks::measure(const double* i_point, const CSlot& i_slot, CBest& io_best) const
{
  const std::size_t block = static_cast<std::size_t>(~childOf(i_slot));
  const unsigned int count = m_pairs[i_slot.pair].count[i_slot.side];
  const double* const box = boxesOf(i_slot.pair) + i_slot.side;
  double squared[SIZE];
  if (!m_form.squaredDistancesOfBlock(i_point, pointsOf(block), box, count, io_best.limit, squared))
    return;
  const CorvNode* const* nodes = &m_nodes[block * SIZE];
  for (unsigned int i = 0; i < count; ++i)
  {
    if (squared[i] < io_best.squared ||
        (squared[i] == io_best.squared && io_best.node && nodes[i]->serial() < io_best.node->serial()))
    {
      io_best.node = nodes[i];
      io_best.squared = squared[i];
    }
  }
  io_best.limit = std::min(io_best.limit, io_best.squared);
}

std::size_t CorvNodeBlocks::allocatedBytes() const
{
  return m_pairs.capacity() * sizeof(CPair) + (m_boxes.capacity() + m_points.capacity()) * sizeof(double) +
         m_nodes.capacity() * sizeof(const CorvNode*) +
         (m_freePairs.capacity() + m_freeBlocks.capacity()) * sizeof(unsigned int);
}
