#ifndef VPTZ_MODEL_EVENT_INFORMATION_H
#define VPTZ_MODEL_EVENT_INFORMATION_H

#include <cstdint>
#include <string>
#include <vector>

#include <vptz/export.h>
#include <vptz/model/event.h>
#include <vptz/model/media.h>
#include <vptz/model/odb.h>
#include <vptz/model/ptz.h>
#include <vptz/model/stored.h>
#include <vptz/model/version.h>

// What an event means for a media source and a PTZ node. One row of the table "event_information"; not safe for
// use from several threads at once.
//
// A reference is loaded from the database when it is asked for and belongs to
// this object; the getter gives null when there is none or it cannot be loaded.
// A setter's object stays the caller's and must live as long as this one uses it.
class VPTZ_API EventInformation : public vptz::UpdatableRow<EventInformation> {
 public:
  // A row that is not stored yet.
  EventInformation() = default;
  EventInformation(Media* media, Ptz* ptz, int handle, Event* event);

  // The row's id, 0 before it is stored.
  std::uint32_t id() const { return id_; }
  void set_id(std::uint32_t value) { id_ = value; }

  // The media source.
  Media* media() const;
  void set_media(Media* value);

  // The PTZ node.
  Ptz* ptz() const;
  void set_ptz(Ptz* value);

  // Its numbers are the service's.
  int handle() const { return handle_; }
  void set_handle(int value) { handle_ = value; }

  // The event.
  Event* event() const;
  void set_event(Event* value);

  // Kept for future use.
  const std::string& reserved() const { return reserved_; }
  void set_reserved(const std::string& value) { reserved_ = value; }

 private:
  friend class odb::access;

  PRAGMA_DB(id auto)
  std::uint32_t id_ = 0;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Media> media_;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Ptz> ptz_;
  int handle_ = 0;
  PRAGMA_DB(on_delete(cascade))
  mutable odb::lazy_shared_ptr<Event> event_;
  std::string reserved_;
};

PRAGMA_DB(object(EventInformation) table("event_information") pointer(std::shared_ptr))

#endif
