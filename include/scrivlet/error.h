// Why an operation of the host or evidence API gave no result, and a result that is a value or that.
#pragma once

#include <scrivlet/export.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace scrivlet {

enum class ErrorCode {
  None,
  // Saved documents (strokes, record files)
  TooLarge,            // more bytes, strokes or points than any document this library reads
  NotJson,             // not JSON text, or cut short
  NotXml,              // not well-formed XML
  NotThisFormat,       // JSON, but not a document of the kind asked for
  UnsupportedVersion,  // a version of the format this library does not read
  Malformed,           // a member missing, of the wrong type or out of range, or nested too deep
  // Evidence and PDF signatures
  InvalidArgument,       // a request that cannot be carried out as given (no strokes, a bad rectangle)
  Unreadable,            // an input that does not read as what it should be, or is too large
  UnsupportedAlgorithm,  // made with an algorithm this library does not accept
  BadKey,                // a key or certificate that does not read, is damaged, or does not match
  CertificateRejected,   // a certificate expired, not yet valid, or not made for signing
  NotThisDocument,       // evidence sealed for another document
  Tampered,              // a part changed since it was sealed or signed
  Untrusted,             // a signer that does not chain to a trusted certificate
  Unsigned,              // no signature where one is required
  TimeStampFailed,       // the time-stamping authority gave no usable token
  Failed,                // anything else (out of memory, a library that failed)
};

class SCRIVLET_EXPORT Error {
 public:
  using Code = ErrorCode;
  Error();  // None, no message
  Error(ErrorCode code, std::string message);

  ErrorCode code() const;
  // One line, in English, without a newline, that a host may show or log.
  const std::string& message() const;
  void setCode(ErrorCode code);
  void setMessage(std::string message);

 private:
  struct Data;
  std::shared_ptr<Data> d_;
};

// The value of an operation, or the Error that stopped it. Reads like std::optional: test it, then
// `*result`, `result->` or `value_or`; `error()` says why there is no value.
template <class T>
class Result {
 public:
  Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
  Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

  bool has_value() const { return state_.index() == 0; }
  explicit operator bool() const { return has_value(); }

  // Only when has_value().
  T& value() & { return *std::get_if<0>(&state_); }
  const T& value() const& { return *std::get_if<0>(&state_); }
  T&& value() && { return std::move(*std::get_if<0>(&state_)); }
  T& operator*() & { return value(); }
  const T& operator*() const& { return value(); }
  T&& operator*() && { return std::move(value()); }
  T* operator->() { return &value(); }
  const T* operator->() const { return &value(); }
  template <class U>
  T value_or(U&& fallback) const& {
    return has_value() ? value() : static_cast<T>(std::forward<U>(fallback));
  }

  // The error; an Error of code None when there is a value.
  const Error& error() const {
    static const Error none;
    const Error* error = std::get_if<1>(&state_);
    return error ? *error : none;
  }

 private:
  std::variant<T, Error> state_;
};

// The value, or nothing with the error in *error (when given): for the functions kept with an Error*
// out-parameter for source compatibility.
template <class T>
std::optional<T> optionalOf(Result<T>&& result, Error* error) {
  if (result) return std::move(*result);
  if (error) *error = result.error();
  return std::nullopt;
}

}  // namespace scrivlet
