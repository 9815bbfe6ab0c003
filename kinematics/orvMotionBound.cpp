#include "kinematics/orvMotionBound.h"

#include "kinematics/orvDevice.h"
#include "kinematics/orvDeviceTable.h"

lmStatus CorvMotionBound::set(const CorvDevice& i_device, const CorvConfig& i_from,
                              const std::vector<double>& i_derivatives)
{
  m_isStraight = false;
  return i_device.readMotion(i_from, i_derivatives, m_isStraight, m_values, m_rates, m_table);
}

lmStatus CorvMotionBound::setStraight(const CorvDevice& i_device, const CorvConfig& i_from,
                                      const std::vector<double>& i_velocity)
{
  m_isStraight = true;
  return i_device.readMotion(i_from, i_velocity, m_isStraight, m_values, m_rates, m_table);
}

double CorvMotionBound::advanceWithin(const double* i_allowances, double i_rest) const
{
  return m_table->advanceWithin({m_values, m_rates, m_isStraight}, i_allowances, i_rest);
}

double CorvMotionBound::advance(double* io_allowances, double i_rest) const
{
  return m_table->advance({m_values, m_rates, m_isStraight}, io_allowances, i_rest);
}

void CorvMotionBound::displacements(double i_rest, double* o_moved) const
{
  m_table->displacements({m_values, m_rates, m_isStraight}, i_rest, o_moved);
}

unsigned int CorvMotionBound::countBodies() const
{
  return m_table->countBodies();
}
