#include "foundation/lumAssert.h"
#include "foundation/lumCodable.h"
#include "foundation/lumDescribe.h"
#include "foundation/lumNotificator.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

namespace
{
int g_destroyed = 0;
}

LUM_HANDLES(FrameProbe)

/// A class as an author writes one.
class FrameProbe : public ClumMutableCodable
{
  LUM_CONCRETE(FrameProbe, ClumMutableCodable);

public:
  enum EKind { ROUND = 1, FLAT };
  static const unsigned int DID_POKE;
  static const unsigned int BROKEN_ERROR;
  static const unsigned int SECOND_ERROR;

  ~FrameProbe() override { ++g_destroyed; }
  static FrameProbeShPtr create(double i_size) { return lumCreate<FrameProbe>(i_size); }
  static FrameProbeShPtr createCopy(const FrameProbeConstShPtr& i_objectToCopy) { return lumCreateCopy(i_objectToCopy); }
  virtual FrameProbeShPtr clone() const { return createCopy(self()); }

  double size() const { return m_size; }
  void size(double i_size)
  {
    if (i_size == m_size)
      return;
    notifyPropertyWillChange("size");
    m_size = i_size;
    notifyPropertyDidChange("size");
  }
  unsigned int countParts() const { return 3; }
  double part(unsigned int i_rank) const { return 10.0 * i_rank; }
  void poke() { notify(DID_POKE); }

protected:
  FrameProbe() = default;
  explicit FrameProbe(double i_size) : m_size(i_size) {}
  lmStatus init(const FrameProbeWkPtr& i_weakPtr)
  {
    const lmStatus status = ClumMutableCodable::init(i_weakPtr);
    return status.failed() || m_size >= 0.0 ? status : lmStatus(BROKEN_ERROR);
  }

private:
  double m_size = 0.0;
};

LUM_DESCRIBE(FrameProbe)
{
  i_class.creates("(double i_size)", &Self::create);
  i_class.property<double>("size", &Self::size, &Self::size);
  i_class.collection<double>("parts", "double", &Self::countParts, &Self::part);
  i_class.enumeration("EKind", "ROUND = 1, FLAT, BOTH = ROUND | FLAT,");
  i_class.dynamicProperty("probe.locked", false);
}
LUM_NOTIFICATION(FrameProbe, DID_POKE);
LUM_STATUS_CODE(FrameProbe, BROKEN_ERROR, 990001, "The probe is broken.");
LUM_STATUS_CODE(FrameProbe, SECOND_ERROR, 990001, "A clash.");

namespace
{
struct Listener
{
  std::vector<std::string> heard;
  void hear(const ShPtr<const ClumNotification>& i_notification)
  {
    heard.push_back(i_notification->stringValue(ClumObject::ELEMENT_NAME_KEY));
  }
};

class Frame : public testing::Test
{
protected:
  static void SetUpTestSuite() { lumRegister_FrameProbe(); }
};
}  // namespace

TEST_F(Frame, ConstructionGivesAnObjectThatKnowsItselfOrNull)
{
  const FrameProbeShPtr probe = FrameProbe::create(2.0);
  EXPECT_EQ(probe->self(), probe);
  EXPECT_EQ(ShPtr<ClumObject>(probe)->classObject()->name(), "FrameProbe");
  g_destroyed = 0;
  EXPECT_FALSE(FrameProbe::create(-1.0));
  EXPECT_EQ(g_destroyed, 1);

  const LogCapture log;
  EXPECT_FALSE(FrameProbe::createCopy(FrameProbeConstShPtr()));
  EXPECT_EQ(log.count(), 0u);
  const FrameProbeShPtr copy = probe->clone();
  EXPECT_EQ(copy->self(), copy);
  EXPECT_EQ(copy->size(), 2.0);
}

TEST_F(Frame, ClassObjectTellsParentMembersAndMethods)
{
  const ClumClassShPtr object = ClumRuntime::classWithName("FrameProbe");
  ASSERT_TRUE(object);
  ASSERT_EQ(object->parents().size(), 1u);
  EXPECT_EQ(object->parents()[0]->name(), "ClumMutableCodable");
  EXPECT_TRUE(object->isA(*ClumObject::CLASS));
  EXPECT_FALSE(ClumCodable::CLASS->allocator());
  EXPECT_TRUE(object->allocator()());

  std::vector<std::string> methods;
  for (const ClumMethodShPtr& method : object->methods())
    methods.push_back(method->returnType() + " " + method->name() + method->parameters() + method->modifiers());
  EXPECT_EQ(methods, (std::vector<std::string>{
                       "static FrameProbeShPtr createCopy(const FrameProbeConstShPtr & i_objectToCopy)",
                       "virtual FrameProbeShPtr clone()const", "static FrameProbeShPtr create(double i_size)"}));

  ClumValue made;
  ASSERT_TRUE(object->methods()[2]->memberFunction()->call(nullptr, {ClumValue(4.0)}, made).succeeded());
  EXPECT_EQ(boost::dynamic_pointer_cast<FrameProbe>(made.getObject())->size(), 4.0);
  EXPECT_TRUE(object->methods()[2]->memberFunction()->call(nullptr, {ClumValue("four")}, made).failed());

  ClumValue item;
  EXPECT_TRUE(object->collectionNamed("parts")->item(*FrameProbe::create(1.0), 2, item).succeeded());
  EXPECT_EQ(item.asDouble(), 20.0);
  int value = 0;
  EXPECT_TRUE(object->enumNamed("EKind")->valueOf("BOTH", value));
  EXPECT_EQ(value, 3);
}

TEST_F(Frame, PropertyIsReadWrittenAndNotifiedByName)
{
  const FrameProbeShPtr probe = FrameProbe::create(1.0);
  const ShPtr<Listener> listener(new Listener);
  const auto subscribe = [&]
  {
    return probe->objectNotificator()->subscribe(ClumObject::DID_CHANGE_PROPERTY, listener, listener.get(),
                                                 &Listener::hear);
  };
  EXPECT_TRUE(subscribe().succeeded());
  EXPECT_TRUE(subscribe().failed());
  probe->size(1.0);
  EXPECT_TRUE(listener->heard.empty());
  EXPECT_TRUE(probe->setProperty("size", ClumValue(5)).succeeded());
  EXPECT_EQ(listener->heard, std::vector<std::string>{"size"});
  ClumValue value;
  EXPECT_TRUE(probe->getProperty("size", value).succeeded());
  EXPECT_EQ(value, ClumValue(5.0));
  EXPECT_TRUE(probe->setProperty("size", ClumValue("large")).failed());
  EXPECT_TRUE(probe->getProperty("nothing", value).failed());

  EXPECT_EQ(probe->dynamicProperty("probe.locked"), ClumValue(false));
  EXPECT_TRUE(probe->dynamicProperty("probe.locked", ClumValue(true)).succeeded());
  EXPECT_EQ(probe->clone()->dynamicProperty("probe.locked"), ClumValue(true));
  EXPECT_TRUE(probe->dynamicProperty("probe.other", ClumValue(true)).failed());
}

TEST_F(Frame, NotificatorDropsTheDeadAndAllowsChangesOnTheWay)
{
  const FrameProbeShPtr probe = FrameProbe::create(1.0);
  const ClumNotificatorShPtr notificator = probe->objectNotificator();
  ShPtr<Listener> dying(new Listener);
  ASSERT_TRUE(notificator->subscribe(FrameProbe::DID_POKE, dying, dying.get(), &Listener::hear).succeeded());
  dying.reset();
  probe->poke();
  EXPECT_FALSE(notificator->hasSubscribers(FrameProbe::DID_POKE));

  struct Leaver
  {
    ClumNotificatorShPtr from;
    int heard = 0;
    void hear(const ShPtr<const ClumNotification>&)
    {
      ++heard;
      from->unsubscribe(this);
    }
  };
  const ShPtr<Leaver> leaver(new Leaver);
  const ShPtr<Listener> relayed(new Listener);
  leaver->from = notificator;
  const ClumNotificatorShPtr relay = ClumNotificator::create();
  notificator->addRelay(relay);
  ASSERT_TRUE(notificator->subscribe(FrameProbe::DID_POKE, leaver, leaver.get(), &Leaver::hear).succeeded());
  ASSERT_TRUE(relay->subscribe(FrameProbe::DID_POKE, relayed, relayed.get(), &Listener::hear).succeeded());
  probe->poke();
  probe->poke();
  EXPECT_EQ(leaver->heard, 1);
  EXPECT_EQ(relayed->heard.size(), 2u);
}

TEST_F(Frame, StatusKeepsItsCauses)
{
  EXPECT_EQ(FrameProbe::BROKEN_ERROR, 990001u);
  EXPECT_EQ(FrameProbe::SECOND_ERROR, lmStatus::FAILURE);
  lmStatus status;
  EXPECT_TRUE(status == 0u && status.succeeded());
  status.setWithReason(FrameProbe::BROKEN_ERROR, lmStatus(-1));
  EXPECT_TRUE(status.hasCode(lmStatus::FAILURE));
  status.push(17);
  const lmStatus copy = status;
  EXPECT_EQ(copy.code(), 17u);
  EXPECT_TRUE(copy.hasCode(FrameProbe::BROKEN_ERROR));
  EXPECT_NE(copy.description().find("The probe is broken."), std::string::npos);
}

TEST_F(Frame, AssertionLogsTheExpressionAndGoesOn)
{
  const LogCapture log;
  const FrameProbeShPtr probe = FrameProbe::create(1.0);
  LUM_ASSERT(probe->size() == 2.0);
  LUM_ASSERT_SUCCESS(probe->setProperty("nothing", ClumValue(1)));
  LUM_ASSERT_SUCCESS(probe->setProperty("size", ClumValue(1)));
  EXPECT_EQ(log.count(), 2u);
  EXPECT_TRUE(log.contains("Assertion failed: probe->size() == 2.0"));
  EXPECT_TRUE(log.contains(
    "Assertion failed: ( ((unsigned int)0) == (probe->setProperty(\"nothing\", ClumValue(1))).code() )"));
}
