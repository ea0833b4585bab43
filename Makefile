# Entry points for people and CI. Every target installs missing dependencies first.
BUILD ?= build
SANITIZE ?=
BUILD_TYPE ?= RelWithDebInfo
CTEST_JOBS ?= 2

.PHONY: all deps configure build build-release test test-tsan demo bench format clean

all: build

deps:
	@scripts/install-deps

configure: deps
	@cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=$(BUILD_TYPE) -DVESK_SANITIZE="$(SANITIZE)" \
		$(CMAKE_ARGS) > $(BUILD).configure.log || (cat $(BUILD).configure.log; exit 1)

build: configure
	@cmake --build $(BUILD)

# Builds the station, the agent and the host optimised (-O3), without tests or benchmarks: the
# optimiser's warnings are errors too.
build-release: deps
	@cmake -S . -B build-release -G Ninja -DCMAKE_BUILD_TYPE=Release -DVESK_BUILD_BENCH=OFF \
		$(CMAKE_ARGS) > build-release.configure.log || (cat build-release.configure.log; exit 1)
	@cmake --build build-release --target vesk_station tib_oam_cm_sa vesk-host

# Runs every test. SANITIZE=address,undefined builds with those sanitizers.
test: build
	@ctest --test-dir $(BUILD) --output-on-failure -j$(CTEST_JOBS) --no-tests=error

# Builds only the threaded tests with ThreadSanitizer and runs them.
test-tsan: deps
	@cmake -S . -B build-tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVESK_SANITIZE=thread \
		-DVESK_BUILD_ALL=OFF > build-tsan.configure.log || (cat build-tsan.configure.log; exit 1)
	@cmake --build build-tsan --target threaded_tests
	@TSAN_OPTIONS="halt_on_error=1 second_deadlock_stack=1" \
		ctest --test-dir build-tsan -L threaded --output-on-failure -j$(CTEST_JOBS) --no-tests=error

# The main job: the reference host on the demo station (loaded into a fresh state directory),
# running each session of DEMO_SESSIONS (data/demo/NAME-session.txt) under a heading line. It
# builds only what it runs: the agent, the station layer and the host. The benchmarks are
# `make bench`.
DEMO_STATE ?= $(BUILD)/demo-state
DEMO_SESSIONS ?= read write gates validation actions cells faults baseband frequency backup
DEMO_HOST = $(BUILD)/host/vesk-host --plugin $(BUILD)/src/libtib_oam_cm_sa.so --state $(DEMO_STATE)
demo: configure
	@cmake --build $(BUILD) --target tib_oam_cm_sa vesk-host
	@rm -rf $(DEMO_STATE)
	@$(BUILD)/host/vesk-host --load data/station/demo-station.xml --state $(DEMO_STATE)
	@n=0; for session in $(DEMO_SESSIONS); do n=$$((n + 1)); \
		echo; echo "=== Session $$n: $$session (data/demo/$$session-session.txt) ==="; \
		$(DEMO_HOST) --script data/demo/$$session-session.txt || exit 1; done

bench: build
	@for b in $(BUILD)/bench/bench_*; do $$b; done

format:
	@git ls-files '*.h' '*.cc' | xargs clang-format -i

clean:
	@rm -rf build build-* *.configure.log
