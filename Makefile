# Front door of the project. `make run` and `make test` are all a fresh machine needs.
JOBS ?= 2
BUILD_DIR ?= build
SAN_DIR ?= build-san
PREFIX ?= /usr/local
FUZZ_SECONDS ?= 20

CMAKE_FLAGS ?= -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
SAN_FLAGS = -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang-14 \
            -DCMAKE_CXX_COMPILER=clang++-14 -DZQ_SANITIZE=ON -DZQ_FUZZ=ON -DZQ_BUILD_BENCH=OFF
SAN_ENV = ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1 \
          UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1

.PHONY: all bootstrap configure build run test sanitize san-build bench fuzz fuzz-smoke \
        install format format-check clean

all: build

bootstrap:
	@scripts/bootstrap.sh

configure: bootstrap
	@[ -f $(BUILD_DIR)/build.ninja ] || cmake -S . -B $(BUILD_DIR) $(CMAKE_FLAGS)

build: configure
	@cmake --build $(BUILD_DIR) -j $(JOBS)

run: build
	@$(BUILD_DIR)/tools/zqtool/zqtool

test: build
	@ctest --test-dir $(BUILD_DIR) --output-on-failure -j $(JOBS)

san-build: bootstrap
	@[ -f $(SAN_DIR)/build.ninja ] || cmake -S . -B $(SAN_DIR) $(SAN_FLAGS)
	@cmake --build $(SAN_DIR) -j $(JOBS)

# The unit tests under AddressSanitizer and UndefinedBehaviorSanitizer; any report fails.
sanitize: san-build
	@$(SAN_ENV) ctest --test-dir $(SAN_DIR) --output-on-failure -j $(JOBS)

# libFuzzer targets, built with clang 14 in the sanitizer build.
fuzz: san-build
	@ls $(SAN_DIR)/fuzz/fuzz_* 2>/dev/null | sed 's/^/built /'

# A short run of every fuzzer on its seed corpus.
fuzz-smoke: fuzz
	@$(SAN_ENV) scripts/fuzz-smoke.sh $(SAN_DIR)/fuzz $(FUZZ_SECONDS)

bench: build
	@scripts/run-bench.sh $(BUILD_DIR)/bench

install: build
	@cmake --install $(BUILD_DIR) --prefix $(PREFIX)

format:
	@scripts/check-format.sh --fix

format-check:
	@scripts/check-format.sh

clean:
	@rm -rf $(BUILD_DIR) $(SAN_DIR)
