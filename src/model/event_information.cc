#include <vptz/model/event_information-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<EventInformation>;
template class vptz::UpdatableRow<EventInformation>;

EventInformation::EventInformation(Media* media, Ptz* ptz, int handle, Event* event)
    : media_(vptz::Borrow(media)), ptz_(vptz::Borrow(ptz)), handle_(handle), event_(vptz::Borrow(event)) {}

Media* EventInformation::media() const { return VptzModel::LoadLazyPtr(media_); }

void EventInformation::set_media(Media* value) { media_ = vptz::Borrow(value); }

Ptz* EventInformation::ptz() const { return VptzModel::LoadLazyPtr(ptz_); }

void EventInformation::set_ptz(Ptz* value) { ptz_ = vptz::Borrow(value); }

Event* EventInformation::event() const { return VptzModel::LoadLazyPtr(event_); }

void EventInformation::set_event(Event* value) { event_ = vptz::Borrow(value); }
