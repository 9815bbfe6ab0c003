#include "foundation/lumMemoryCoder.h"
#include "foundation/lumXMLCoder.h"
#include "kinematics/orvCSGroup.h"
#include "kinematics/orvConfig.h"
#include "kinematics/orvConfigSpaceConverter.h"
#include "kinematics/orvDevice.h"
#include "manifolds/orvPointManifold.h"
#include "support/composites.h"
#include "support/logCapture.h"

#include <gtest/gtest.h>

#include <limits>

LUM_HANDLES(DoublingConverter)

/// Doubles every value, between spaces of the types "test.a" and "test.b".
class DoublingConverter : public CorvConfigSpaceConverter
{
  LUM_UNREFLECTED(DoublingConverter, CorvConfigSpaceConverter);

public:
  static DoublingConverterShPtr create() { return lumCreate<DoublingConverter>(); }
  mutable int conversions = 0;

protected:
  DoublingConverter() : CorvConfigSpaceConverter({"test.a", "test.b"}) {}
  lmStatus init(const DoublingConverterWkPtr& i_weakPtr) { return CorvConfigSpaceConverter::init(i_weakPtr); }
  lmStatus doConvert(const CorvConfig& i_from, CorvConfig& o_to) const override
  {
    ++conversions;
    return o_to.setDofValues((i_from * 2.0).dofValues());
  }
};

namespace
{
using Values = std::vector<double>;

CorvCSCompositeShPtr spaceOfType(const char* i_type, unsigned int i_count)
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create(i_type);
  for (unsigned int rank = 0; rank < i_count; ++rank)
    space->appendSubspace(CorvDof::create(false));
  return space;
}

/// What the text decodes to, from a coder of files.
ClumXMLCoderShPtr parsed(const std::string& i_text)
{
  const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
  EXPECT_TRUE(coder->parse(i_text).succeeded());
  return coder;
}
} // namespace

TEST(CorvConfigSpaceConverter, ServesTheTypesThatItSupports)
{
  const DoublingConverterShPtr converter = DoublingConverter::create();
  EXPECT_EQ(converter->supportedTypes(), (std::set<std::string>{"test.a", "test.b"}));
  const CorvConfig from(spaceOfType("test.a", 2), Values{1, 2});
  CorvConfig to(spaceOfType("test.b", 2));
  EXPECT_TRUE(converter->convert(from, to).succeeded());
  EXPECT_EQ(to.dofValues(), (Values{2, 4}));
  EXPECT_TRUE(converter->convert(to, to).succeeded());

  CorvConfig foreign(spaceOfType("test.c", 2), Values{5, 6});
  CorvConfig nowhere;
  EXPECT_TRUE(converter->convert(from, foreign).failed());
  EXPECT_TRUE(converter->convert(foreign, to).failed());
  EXPECT_TRUE(converter->convert(from, nowhere).failed());
  EXPECT_TRUE(converter->convert(nowhere, to).failed());
  EXPECT_EQ(foreign.dofValues(), (Values{5, 6}));
  EXPECT_EQ(converter->conversions, 2);
  // What the conversion itself answers is handed on.
  CorvConfig small(spaceOfType("test.b", 1));
  EXPECT_TRUE(converter->convert(from, small).failed());
  EXPECT_EQ(converter->conversions, 3);
}

TEST(CorvConfig, IsAManifoldOfOnePointInAnySpaceThatHasItsDofs)
{
  const CorvCSCompositeShPtr space = compositeOfSize(2);
  const CorvCSGroupShPtr ambient = CorvCSGroup::create("test.group");
  ASSERT_TRUE(ambient->appendSubspace(space->dof(1)).succeeded() && ambient->appendSubspace(space->dof(0)).succeeded());
  const CorvConfig config(space, Values{1, 2});
  const CorvManifoldShPtr manifold = config.toManifold(ambient);
  ASSERT_TRUE(boost::dynamic_pointer_cast<CorvPointManifold>(manifold));
  EXPECT_EQ(manifold->ambientSpace(), ambient);
  CorvConfig element;
  ASSERT_TRUE(manifold->getRandomElement(element).succeeded());
  EXPECT_EQ(element, CorvConfig(ambient, Values{2, 1}));
  EXPECT_TRUE(manifold->isElement(element));
  EXPECT_FALSE(manifold->isElement(CorvConfig(ambient, Values{1, 2})));

  // Valid is an element that the validators of the ambient space accept.
  const ClumParameterMapConstShPtr none;
  EXPECT_TRUE(manifold->isValidElement(element, none));
  EXPECT_FALSE(manifold->isValidElement(CorvConfig(ambient, Values{0, 0}), none));
  EXPECT_TRUE(manifold->getRandomValidElement(element, none).succeeded());
  space->dof(1)->boundWithin(5.0, 6.0);
  EXPECT_FALSE(manifold->isValidElement(element, none));
  EXPECT_TRUE(manifold->getRandomValidElement(element, none).failed());
  EXPECT_FALSE(config.toManifold(CorvConfigSpaceShPtr()));
  EXPECT_FALSE(CorvConfig().toManifold(space));
}

TEST(CorvConfig, DumpIsATextThatReadsBack)
{
  const CorvCSCompositeShPtr space = compositeOf({CorvDof::create(true), CorvDof::create(false)});
  space->dof(1)->boundWithin(-1.0, 2.5);
  const CorvConfig config(space, Values{1.0 / 3.0, -2e-300});
  const CorvConfig back(parsed(config.textualDump()), "config");
  ASSERT_TRUE(back.space());
  EXPECT_EQ(back.dofValues(), config.dofValues());
  EXPECT_TRUE(*back.space() == *space);
  EXPECT_EQ(back.space()->dof(1)->vmax(), 2.5);

  const auto spaceBack =
    boost::dynamic_pointer_cast<CorvConfigSpace>(parsed(space->textualDump())->decodeObject("configSpace"));
  ASSERT_TRUE(spaceBack);
  EXPECT_TRUE(spaceBack->equalByCoding(*space));
  EXPECT_FALSE(CorvConfig(parsed(CorvConfig().textualDump()), "config").space());
}

TEST(CorvConfigSpace, FileThatTellsAnImpossibleSpaceIsRefused)
{
  const CorvCSCompositeShPtr space = CorvCSComposite::create("the.outer.type");
  const CorvCSCompositeShPtr inner = CorvCSComposite::create("the.inner.type");
  const CorvDofShPtr dof = CorvDof::create(false);
  dof->bounds(-0.625, 0.375);
  ASSERT_TRUE(space->appendSubspace(inner).succeeded() && inner->appendSubspace(dof).succeeded());
  const std::string text = space->textualDump();
  const auto decodedWith = [&](const std::string& i_old, const std::string& i_new)
  {
    std::string changed = text;
    const std::size_t place = changed.find(i_old);
    EXPECT_NE(place, std::string::npos) << i_old << " in\n" << text;
    if (place != std::string::npos)
      changed.replace(place, i_old.size(), i_new);
    const ClumXMLCoderShPtr coder = ClumXMLCoder::create();
    return coder->parse(changed).failed() ? ClumCodableShPtr() : coder->decodeObject("configSpace");
  };
  EXPECT_TRUE(decodedWith("the.outer.type", "another.type"));
  const LogCapture log;
  EXPECT_FALSE(decodedWith("the.outer.type", ""));
  EXPECT_FALSE(decodedWith("the.inner.type", ""));
  EXPECT_FALSE(decodedWith("-0.625", "0.625"));
  EXPECT_FALSE(decodedWith("-0.625", "nan"));
  EXPECT_GE(log.count(), 4u);

  // A space that holds itself, by way of another.
  const ClumMemoryCoderShPtr coder = ClumMemoryCoder::create();
  const CorvCSGroupShPtr group = CorvCSGroup::create("test.group");
  ASSERT_TRUE(group->appendSubspace(space).succeeded());
  ASSERT_TRUE(coder->encodeObjectShPtr(group, "group").succeeded());
  coder->setDecoded(inner.get(), nullptr);
  EXPECT_FALSE(coder->decodeObject("group"));
}
