#include <HabitraModel/Store/Files/SystemFailure.h>
#include <HabitraModel/Store/StoreUnit.h>
#include <QZKit/Trap.h>

#include <fmt/format.h>

#include <algorithm>

namespace habitra {

StoreUnit::StoreUnit(std::shared_ptr<Store> store)
    : store_(std::move(store)),
      connection_(store_->connect()),
      turn_(store_->makeTurn()),
      signal_(store_->makeSignal()),
      beginView_(*connection_, "BEGIN"),
      beginUnit_(*connection_, "BEGIN IMMEDIATE"),
      commit_(*connection_, "COMMIT"),
      readNewest_(*connection_, "SELECT newestSequence, newestObjectID, newestMoment FROM habitra_meta"),
      writeNewest_(*connection_, "UPDATE habitra_meta SET newestSequence=?, newestObjectID=?, newestMoment=?") {}

StoreUnit::~StoreUnit() { rollback(); }

bool StoreUnit::beginView() {
  if (state_ != State::idle) return false;
  if (store_->isInMemory()) return readNewest();  // a view would keep writers from committing
  beginView_.use()->step();
  state_ = State::viewing;
  return readNewest();
}

void StoreUnit::endView() noexcept {
  if (state_ != State::viewing) return;
  connection_->rollback();
  state_ = State::idle;
}

bool StoreUnit::begin() {
  qz::require(state_ != State::writing, "a unit is begun within a unit");
  if (store_->isReadOnly()) failReadOnly(store_->file());
  endView();
  turn_->take();
  try {
    beginUnit_.use()->step();
    state_ = State::writing;
    store_->tighten();
    const bool hasMoved = readNewest();
    newestGiven_ = newest_.object;
    return hasMoved;
  } catch (...) {
    rollback();
    throw;
  }
}

void StoreUnit::commit(const std::optional<StoredTransaction>& transaction) {
  Newest newest = newest_;
  if (transaction) {
    newest = {transaction->sequence, newestGiven_, std::max(newest_.moment, std::optional(transaction->moment))};
  }
  try {
    if (transaction) {
      writeNewest(newest);
      signal_.prepare();
    }
    commit_.use()->step();
  } catch (...) {
    rollback();
    throw;
  }
  state_ = State::idle;
  newest_ = newest;
  if (transaction) signal_.announce(newest.sequence);
  connection_->shortenLog();
  turn_->release();
}

void StoreUnit::rollback() noexcept {
  connection_->rollback();
  state_ = State::idle;
  turn_->release();
}

bool StoreUnit::readNewest() {
  auto statement = readNewest_.use();
  if (!statement->step())
    throw StoreError(
        StoreError::Kind::damaged,
        fmt::format("{} is damaged: a row of its own is missing; restore a backup of it", store_->file().string()));
  const Newest newest{statement->integer(0), ObjectID{statement->integer(1)},
                      statement->isNull(2)
                          ? std::nullopt
                          : std::optional(qz::Moment(std::chrono::microseconds(statement->integer(2))))};
  const bool hasMoved = hasSeenStore_ && newest.sequence != newest_.sequence;
  hasSeenStore_ = true;
  newest_ = newest;
  return hasMoved;
}

void StoreUnit::writeNewest(const Newest& newest) {
  auto statement = writeNewest_.use();
  statement->bind(1, newest.sequence);
  statement->bind(2, rawValue(newest.object));
  statement->bind(3, std::int64_t{newest.moment->time_since_epoch().count()});  // a transaction has set it
  statement->step();
}

std::string StoreUnit::storeIdentifier() {
  Statement statement(*connection_, "SELECT storeIdentifier FROM habitra_meta");
  return statement.step() ? std::string(statement.text(0)) : std::string();
}

ObjectID StoreUnit::nextObjectID() {
  qz::require(isWriting(), "a row is numbered outside a unit");
  newestGiven_ = store_->nextObjectID(newestGiven_);
  return newestGiven_;
}

bool StoreUnit::hasGiven(ObjectID id) const {
  qz::require(isWriting(), "a number is looked at outside a unit");
  return id > ObjectID::none && id <= newestGiven_;
}

}  // namespace habitra
