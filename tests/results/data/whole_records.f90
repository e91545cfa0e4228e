! Records of every kind of item, and one result of the hybrid model on a mesh of 3 x 2 x 2.
program whole_records
    implicit none
    integer, parameter :: ni = 3, nj = 2, nk = 2
    real(4) :: a(ni, nj, nk)
    integer :: i, n

    open (10, file='whole_records.bin', form='unformatted', status='replace')
    write (10) 101
    write (10) 3, -2, 2147483647
    write (10) 7, 2.5, (real(i), i=1, 4), -1
    write (10)
    write (10) -0.0
    close (10)

    open (10, file='vpkeout_00480.tuf', form='unformatted', status='replace')
    write (10) 132
    write (10) ni, nj, nk
    do n = 1, 11
        call fill(n)
        write (10) a
    end do
    write (10) 480
    write (10) 0.125
    do n = 12, 14
        call fill(n)
        write (10) a
    end do
    close (10)

    open (21, file='restart.info', status='replace')
    write (21, *) 480
    write (21, *) 1.234567e-5, 0.25, 3.0e-4, 1.0e25
    write (21, *) ni, nj, nk
    close (21)

contains

    ! Element (i,j,k) of array n is 1000 n + 100 i + 10 j + k.
    subroutine fill(n)
        integer, intent(in) :: n
        integer :: i, j, k
        do k = 1, nk
            do j = 1, nj
                do i = 1, ni
                    a(i, j, k) = real(1000*n + 100*i + 10*j + k)
                end do
            end do
        end do
    end subroutine fill

end program whole_records
