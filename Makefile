# Front door: `make run` builds and runs the demo, `make test` builds and runs every test.
BUILD_DIR   ?= build
BENCH_DIR   ?= build-bench
JOBS        ?= 2
CMAKE_FLAGS ?=

# Debian packages the build, the tests and the benchmarks need.
DEB_PACKAGES := cmake g++ make pkg-config locales \
  libicu-dev libexpat1-dev \
  libboost-dev libboost-filesystem-dev libboost-thread-dev libboost-date-time-dev libboost-system-dev \
  libgtest-dev libgmock-dev libbenchmark-dev libutfcpp-dev
# Expat before this revision crashes on long entity chains.
EXPAT_MIN := 2.5.0-1+deb12u5

.PHONY: all deps configure build test run bench clean

all: build

deps:
	@missing=""; \
	for p in $(DEB_PACKAGES); do \
	  dpkg -s $$p >/dev/null 2>&1 || missing="$$missing $$p"; \
	done; \
	ver=$$(dpkg-query -W -f='$${Version}' libexpat1 2>/dev/null); \
	if [ -z "$$ver" ] || dpkg --compare-versions "$$ver" lt "$(EXPAT_MIN)"; then \
	  missing="$$missing libexpat1 libexpat1-dev"; \
	fi; \
	if [ -n "$$missing" ]; then \
	  echo "deps: installing$$missing"; \
	  apt-get update -qq && \
	  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $$missing; \
	else \
	  echo "deps: all present"; \
	fi

configure: deps
	cmake -S . -B $(BUILD_DIR) $(CMAKE_FLAGS)

build: configure
	cmake --build $(BUILD_DIR) -j$(JOBS)

test: build
	cd $(BUILD_DIR) && ctest --output-on-failure -j$(JOBS)

run: build
	$(BUILD_DIR)/bin/qxi18n demo

bench: deps
	cmake -S . -B $(BENCH_DIR) -DCMAKE_BUILD_TYPE=Release -DQXI18N_BUILD_BENCH=ON -DQXI18N_BUILD_TESTS=OFF -DQXI18N_BUILD_TOOLS=OFF
	cmake --build $(BENCH_DIR) -j$(JOBS) --target qxi18n_bench qxi18n_bench_internal
	$(BENCH_DIR)/bin/qxi18n_bench
	$(BENCH_DIR)/bin/qxi18n_bench_internal

clean:
	rm -rf $(BUILD_DIR) $(BENCH_DIR)
