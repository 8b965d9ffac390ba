#include <vptz/model/movement-odb.hxx>

#include "model/stored_rows.h"

template class vptz::StoredRow<Movement>;
template class vptz::UpdatableRow<Movement>;

Movement::Movement(bool have_absolute_move, bool have_continues_move, bool have_relative_move)
    : have_absolute_move_(have_absolute_move),
      have_continues_move_(have_continues_move),
      have_relative_move_(have_relative_move) {}
