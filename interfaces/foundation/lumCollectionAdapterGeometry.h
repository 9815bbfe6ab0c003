#pragma once

#include "foundation/lumGeometry.h"

/// A live view on a reflected collection of geometries of some object, as one group.
///
/// The members are read from the collection and read again after the object has sent DID_CHANGE_COLLECTION for it, or
/// DID_CHANGE_PROPERTY for its "version". Their frames come from a second reflected collection, of `ClumMat4`, if one
/// is named; otherwise each member's own position counts, and the group's position is that at which it was last
/// applied. The object is held weakly: without it the group is empty.
///
/// Members that a scene has extracted do not count as members until they are put back.
class LUM_API ClumCollectionAdapterGeometry : public ClumGeometry
{
  LUM_CONCRETE(ClumCollectionAdapterGeometry, ClumGeometry);

public:
  ~ClumCollectionAdapterGeometry() override;
  /// @param i_framesCollection the collection of the members' frames relative to the group, or an empty text.
  /// @return null if the object is null or has no such collection.
  static ClumCollectionAdapterGeometryShPtr create(const ClumObjectShPtr& i_object, const std::string& i_collection,
                                                   const std::string& i_framesCollection = std::string());
  static ClumCollectionAdapterGeometryShPtr createCopy(const ClumCollectionAdapterGeometryConstShPtr& i_objectToCopy);
  ClumGeometryShPtr clone() const override;

  ClumObjectShPtr object() const { return m_object.lock(); }
  const std::string& collectionName() const { return m_collection; }
  /// The scene that it was added to; null if none.
  ClumSceneShPtr scene() const;

  void applyPositionToMembers() override;
  unsigned int countMembers() const override;
  ClumGeometryShPtr member(unsigned int i_rank) const override;
  ClumMat4 memberFrame(unsigned int i_rank) const override;
  bool hasCapability(ECapability i_capability) const override;
  std::uint64_t stamp() const override;
  /// Reads the collection again at the next use, for an object that does not announce its changes.
  void collectionDidChange();

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;
  void awake() override;

protected:
  ClumCollectionAdapterGeometry() = default;
  ClumCollectionAdapterGeometry(const ClumObjectShPtr& i_object, const std::string& i_collection,
                                const std::string& i_framesCollection);
  /// The copy is in no scene and has nothing extracted.
  ClumCollectionAdapterGeometry(const ClumCollectionAdapterGeometry& i_other);
  lmStatus init(const ClumCollectionAdapterGeometryWkPtr& i_weakPtr);

private:
  friend class ClumScene;

  bool areCollectionsOf(const ClumObject& i_object) const;
  void subscribe();
  void objectDidChange(const ShPtr<const ClumNotification>& i_notification);
  void update() const;
  bool hasOwnFrames() const { return m_framesCollection.empty(); }
  void scene(const WkPtr<ClumScene>& i_scene);
  /// Takes a member out of the group, or puts it back. @return false if it was not there, or not taken out.
  bool extract(const ClumGeometryShPtr& i_member);
  bool reintegrate(const ClumGeometryShPtr& i_member);

  ClumObjectWkPtr m_object;
  std::string m_collection;
  std::string m_framesCollection;
  WkPtr<ClumScene> m_scene;
  std::vector<ClumGeometryShPtr> m_extracted;
  ClumMat4 m_appliedPosition; ///< at which the members that carry their own frames stand
  mutable bool m_isUpToDate = false;
  mutable std::vector<ClumGeometryShPtr> m_members;
  mutable std::vector<ClumMat4> m_frames;
};
