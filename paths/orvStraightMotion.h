#pragma once

#include "kinematics/orvConfig.h"

#include <vector>

// The straight motion of all dofs at once between two configurations of one space. A circular dof takes the short way
// round, and its values are not folded back.

/// The signed way of a dof from one value to another, the short way round for an unbounded rotation.
double orvWayOfDof(const CorvConfigSpace& i_space, unsigned int i_rank, double i_start, double i_end);
/// The value of a dof at a part, 0 to 1, of that way; not folded back.
double orvStraightValue(const CorvConfigSpace& i_space, unsigned int i_rank, double i_start, double i_end,
                        double i_param);

/// True if a circular dof that is not passive has half a turn to go, to within `i_tolerance` radians: it has no short
/// way round.
bool orvHasHalfTurn(const CorvConfig& i_start, const CorvConfig& i_end, double i_tolerance);

/// Writes the configuration at the parameter, 0 at the start and 1 at the end. Passive dofs begin where the motion
/// begins, whatever `io_cfg` held before.
void orvInterpolateStraight(const CorvConfig& i_start, const CorvConfig& i_end, double i_param, CorvConfig& io_cfg);

/// The rate of each dof by length, passive ones included. A dof that moves along a motion without a length has an
/// infinite rate.
void orvComputeStraightRates(const CorvConfig& i_start, const CorvConfig& i_end, double i_length,
                             std::vector<double>& o_rates);
/// True if a passive dof differs between the ends: it does not move straight.
bool orvMovesPassiveDof(const CorvConfig& i_start, const CorvConfig& i_end);
/// The rates with their signs. @return false if a passive dof differs between the ends.
bool orvGetStraightVelocity(const CorvConfig& i_start, const CorvConfig& i_end, double i_length,
                            std::vector<double>& o_velocity);
