#pragma once

#include "roadmaps/handles.h"

/// What nodes hold in place of their component, so that a merge need not visit them: the cell of a merged component
/// leads on to that of the component it became part of.
struct CorvComponentCell
{
  CorvConnectedComponentWkPtr component;
  ShPtr<CorvComponentCell> next; ///< null for the cell of a component that stands
};

/// The last cell of a chain, which is shortened on the way.
inline const ShPtr<CorvComponentCell>& lastComponentCell(ShPtr<CorvComponentCell>& io_cell)
{
  while (io_cell->next)
  {
    if (io_cell->next->next)
      io_cell->next = io_cell->next->next;
    io_cell = ShPtr<CorvComponentCell>(io_cell->next);
  }
  return io_cell;
}
