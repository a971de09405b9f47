#include <HabitraBackup/CSV/CSVColumns.h>
#include <HabitraBackup/CSV/CSVReader.h>
#include <HabitraBackup/Files/FileReading.h>
#include <HabitraBackup/HealthSamples/HealthSampleCSV.h>
#include <HabitraBackup/HealthSamples/HealthSampleRow.h>
#include <HabitraBackup/HealthSamples/RowIdentifiers.h>

#include <optional>

namespace habitra {

namespace {

constexpr std::array<std::size_t, healthSampleHeaders.size()> requiredColumns{0, 1, 2, 3, 4, 5};

class SampleDecoder final : public CSVReader::Handler {
 public:
  explicit SampleDecoder(const HealthSampleCSVDecoder::Handler& onSample) : onSample_(onSample) {}

  void header(std::size_t line, std::span<const std::string_view> names) override {
    columns_.emplace(CSVColumnNames{healthSampleHeaders, requiredColumns}, line, names);
  }

  void row(std::size_t line, std::span<const std::string_view> fields) override {
    HealthSampleRow row{.line = line};
    for (std::size_t column = 0; column < row.fields.size(); ++column)
      row.fields[column] = columns_->field(fields, column);
    qz::QZHKSample sample = row.sample();
    sample.identifier = identifiers_.next(sample);
    onSample_(sample);
  }

 private:
  const HealthSampleCSVDecoder::Handler& onSample_;
  std::optional<CSVColumns> columns_;
  RowIdentifiers identifiers_;
};

SampleStore::Saved bringIn(const ByteSource& source, SampleStore& store) {
  return store.saveEach([&source](const SampleStore::Sink& sink) { HealthSampleCSVDecoder().decode(source, sink); });
}

}  // namespace

void HealthSampleCSVDecoder::decode(const ByteSource& source, const Handler& onSample) const {
  SampleDecoder decoder(onSample);
  readCSV(source, decoder);
}

SampleStore::Saved importHealthSamples(const std::filesystem::path& file, SampleStore& store) {
  SampleStore::Saved saved;
  readFile(file, [&](const ByteSource& source) { saved = bringIn(source, store); });
  return saved;
}

SampleStore::Saved importHealthSamples(std::istream& stream, std::string_view name, SampleStore& store) {
  SampleStore::Saved saved;
  readStream(stream, name, [&](const ByteSource& source) { saved = bringIn(source, store); });
  return saved;
}

}  // namespace habitra
