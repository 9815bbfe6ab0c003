#pragma once

#include "paths/orvPathVisitor.h"

#include <string>
#include <vector>

/// Writes down what a path tells of itself, a character for each call.
class PathRecorder : public CorvPathVisitor
{
public:
  static ShPtr<PathRecorder> create() { return ShPtr<PathRecorder>(new PathRecorder); }
  void beginHybridPath(const CorvHybridPathConstShPtr&) override { told += "{"; }
  void endHybridPath(const CorvHybridPathConstShPtr&) override { told += "}"; }
  void beginPath(const CorvPathConstShPtr&) override { told += "("; }
  void endPath(const CorvPathConstShPtr&) override { told += ")"; }
  void beginCompositeDirectPath(const CorvDirectPathConstShPtr&) override { told += "["; }
  void endCompositeDirectPath(const CorvDirectPathConstShPtr&) override { told += "]"; }
  void beginSequenceDirectPath(const CorvDirectPathConstShPtr&) override { told += "<"; }
  void endSequenceDirectPath(const CorvDirectPathConstShPtr&) override { told += ">"; }
  void reachConfiguration(const CorvConfig&) override { told += "."; }
  void executeDirectPath(const CorvDirectPathConstShPtr&) override { told += "?"; }
  void executeLinearDirectPath(const CorvDirectPathConstShPtr& i_path) override
  {
    told += "-";
    executed.push_back(i_path);
  }

  void executeSlerpDirectPath(const CorvDPSolidMotionConstShPtr&) override { told += "~"; }

  std::string told;
  std::vector<CorvDirectPathConstShPtr> executed;
};
